// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/runorder.h"

#include "panels/componentroster.h"

RunStep stepAfterVerdict(int judged, int armed, bool tarvekStation)
{
    if (judged == roster::lastTestedButton)
        return {RunAction::Queue, roster::firstRotary};
    if (judged == roster::lastComponent)
        return {RunAction::Finish, armed};
    if (!tarvekStation && judged + 1 == roster::channelButton)
        return {RunAction::Skip, armed + 1};
    return {RunAction::Queue, armed + 1};
}
