// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "yield/figures/report.h"

#include <QString>
#include <QVector>

struct Section {
    QString id;
    QString link; ///< At the top of the page.
    QString heading;
    QString content; ///< Markup.
};

/// The sections of the page in their order; of a report without units the first one only.
QVector<Section> sectionsOf(const Report& report);
