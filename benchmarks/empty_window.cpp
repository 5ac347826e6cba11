// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QApplication>
#include <QMainWindow>

/// Floor of whatever the station costs as a process: an empty window of its size.
int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1086, 602);
    window.show();
    return QApplication::exec();
}
