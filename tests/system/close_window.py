#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Closes a window as a window manager does: close_window.py WINDOW."""
import ctypes
import struct
import sys

xlib = ctypes.CDLL("libX11.so.6")
xlib.XOpenDisplay.restype = ctypes.c_void_p
xlib.XInternAtom.restype = ctypes.c_ulong
display = ctypes.c_void_p(xlib.XOpenDisplay(None))
protocols, close = (xlib.XInternAtom(display, name, 0) for name in (b"WM_PROTOCOLS", b"WM_DELETE_WINDOW"))
client_message, window = 33, int(sys.argv[1])
event = struct.pack("@iLiPLLi5l", client_message, 0, 0, 0, window, protocols, 32, close, 0, 0, 0, 0)
xlib.XSendEvent(display, ctypes.c_ulong(window), 0, ctypes.c_long(0), event.ljust(192, b"\0"))
xlib.XFlush(display)
