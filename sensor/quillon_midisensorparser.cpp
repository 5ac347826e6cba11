// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "sensor/quillon_midisensorparser.h"

#include "sensor/quillon_midisensorparserdriver.h"

Quillon_MIDISensorParser::Quillon_MIDISensorParser(QObject* parent)
    : QObject(parent)
    , driver(new Quillon_MIDISensorParserDriver(this))
{
    setProcessor(driver);
}

Quillon_MIDISensorParser::~Quillon_MIDISensorParser()
{
    setProcessor(nullptr);
}
