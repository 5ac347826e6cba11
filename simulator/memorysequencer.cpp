// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "simulator/memorysequencer.h"

#include "simulator/porttable.h"

namespace memorysequencer
{
void failOpens(bool fail)
{
    portTable().failOpens(fail);
}

void setAbsent(bool absent)
{
    portTable().setAbsent(absent);
}

int clientCount()
{
    return portTable().clientCount();
}

int portCount()
{
    return portTable().portCount();
}

std::size_t waitingEvents()
{
    return portTable().waitingEvents();
}
} // namespace memorysequencer
