// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/runorder.h"

#include "unit/componentroster.h"

RunStep stepAfterResult(int componentNum, int currentComponent, bool tarvekStation)
{
    if (componentNum == roster::lastTestedButton)
        return {RunAction::Queue, roster::firstRotary};
    if (componentNum == roster::lastComponent)
        return {RunAction::Finish, currentComponent};
    if (!tarvekStation && componentNum + 1 == roster::channelButton)
        return {RunAction::Skip, currentComponent + 1};
    return {RunAction::Queue, currentComponent + 1};
}
