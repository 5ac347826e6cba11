#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks a log of the station and says which bands it shows as not covered."""
import re
import sys

HEAD = rb"Norvane Instruments\n\r\n\r\nZORVI\t#(?P<serial>[^\n]*)\t(?P<date>[^\t\n]*)\n"
kinds = [(b"FADER", i, i, 13) for i in range(9)]
kinds += [(b"BUTTON", i, i + 9, 0 if i == 30 else 2) for i in range(31)]
kinds += [(b"ROTARY", i, i + 40, 13) for i in range(4)]
body = b""
for kind, index, component, bands in kinds:
    body += rb"\r\n\r\n-{16} %s: %d \(Component %d\) -{16}" % (kind, index, component)
    body += b"".join(rb"\r\nRange %d: (?P<c%d_%d>[01])" % (i, component, i) for i in range(bands))
    body += rb"\r\n NOT TESTED \(Power Button\)\n" if component == 39 else rb"\n"

log = re.fullmatch(HEAD + body, open(sys.argv[1], "rb").read())
if log is None:
    sys.exit(f"{sys.argv[1]}: not a log of the station")
bands = {name: value for name, value in log.groupdict().items() if name.startswith("c")}
print(f"serial {log['serial'].decode()}, {list(bands.values()).count(b'1')} of {len(bands)} bands covered")
for component in dict.fromkeys(name.split("_")[0] for name in bands):
    missing = [n.split("_")[1] for n, v in bands.items() if n.split("_")[0] == component and v == b"0"]
    if missing:
        print(f"not covered: component {component[1:]}: {' '.join(missing)}")
