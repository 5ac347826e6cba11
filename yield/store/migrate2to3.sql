-- SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
-- SPDX-License-Identifier: GPL-3.0-or-later

-- In place, so that permissions and views stay. indexes.sql makes the indexes again.
DROP INDEX IF EXISTS attempts_by_unit;

DROP INDEX IF EXISTS repeated_saves_by_unit;

ALTER TABLE attempts RENAME COLUMN complete TO passed;

ALTER TABLE attempts RENAME COLUMN ended_at TO aborted_component;

ALTER TABLE attempts ADD COLUMN tests_18 INTEGER NOT NULL DEFAULT 0 CHECK (tests_18 IN (0, 1));

ALTER TABLE attempts ADD COLUMN run TEXT;

ALTER TABLE attempts ADD COLUMN started_at TEXT;

ALTER TABLE attempts ADD COLUMN save_number INTEGER;

ALTER TABLE repeated_saves ADD COLUMN run TEXT;

ALTER TABLE repeated_saves ADD COLUMN save_number INTEGER;

UPDATE attempts SET tests_18 = 1 WHERE station_id IN (SELECT id FROM stations WHERE tests_18 = 1);

UPDATE schema_version SET version = 3;
