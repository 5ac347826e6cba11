// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QTest>
#include <QTextStream>

/// The reliability tests have two forms: the short one runs with every other test, the full one
/// with ZORVI_SOAK=1 in the environment. Both print a line for each figure.
namespace figures
{
inline int count(int shortForm, int fullForm)
{
    return qEnvironmentVariableIntValue("ZORVI_SOAK") != 0 ? fullForm : shortForm;
}

/// One row of the table: what was tested, how often, how much of it was lost or wrong.
inline void print(const QString& what, int tested, int lost, const QString& remark = {})
{
    QTextStream(stdout) << "figure | " << what << " | " << tested << " | " << lost << " | "
                        << remark << Qt::endl;
}
} // namespace figures
