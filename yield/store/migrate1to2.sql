-- SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
-- SPDX-License-Identifier: GPL-3.0-or-later

-- In place, so that permissions and views stay.
ALTER TABLE attempts ADD COLUMN ended_at INTEGER;

-- Under another name, so that a program of version 1 that still runs fails.
ALTER TABLE other_saves RENAME TO repeated_saves;

DROP INDEX attempts_by_time;

DROP INDEX attempts_by_serial;

DROP INDEX attempts_by_day;

DROP INDEX attempts_not_complete;
