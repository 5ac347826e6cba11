// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QVector>

struct Definition {
    QString term;
    QString meaning;
};

/// The terms of the page, in the order in which it lists them.
const QVector<Definition>& definitions();

/// What a term means; empty for other words.
QString meaningOf(const QString& term);
