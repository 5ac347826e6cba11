-- SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
-- SPDX-License-Identifier: GPL-3.0-or-later

-- Makes the tables of version 1 those of schema.sql. In place, so that rights and views of a plant
-- stay. The table other_saves gets another name, so that a program of version 1 that still runs
-- fails instead of grouping by its rules.
ALTER TABLE attempts ADD COLUMN ended_at INTEGER;

ALTER TABLE other_saves RENAME TO repeated_saves;

DROP INDEX attempts_by_time;

DROP INDEX attempts_by_serial;

DROP INDEX attempts_by_day;

DROP INDEX attempts_not_complete;

CREATE INDEX attempts_by_unit
    ON attempts (serial {bytewise}, tested_at {bytewise}, station_id, marks);

CREATE INDEX repeated_saves_by_unit ON repeated_saves (serial {bytewise});

UPDATE schema_version SET version = 2;
