-- SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
-- SPDX-License-Identifier: GPL-3.0-or-later

-- The tables of release 1.2.0, and a view of a user.
CREATE TABLE schema_version (version INTEGER NOT NULL);
INSERT INTO schema_version VALUES (2);
CREATE TABLE stations (
    id {id},
    name TEXT NOT NULL UNIQUE,
    tests_18 INTEGER NOT NULL DEFAULT 0 CHECK (tests_18 IN (0, 1)));
CREATE TABLE attempts (
    id {id},
    station_id BIGINT NOT NULL REFERENCES stations (id),
    serial TEXT NOT NULL,
    tested_at TEXT NOT NULL,
    marks {bytes} NOT NULL,
    complete INTEGER NOT NULL CHECK (complete IN (0, 1)),
    ended_at INTEGER,
    UNIQUE (station_id, serial, tested_at, marks));
CREATE INDEX attempts_by_unit
    ON attempts (serial {bytewise}, tested_at {bytewise}, station_id, marks);
CREATE TABLE missed_bands (
    attempt_id BIGINT NOT NULL REFERENCES attempts (id) ON DELETE CASCADE,
    component INTEGER NOT NULL,
    band INTEGER NOT NULL,
    PRIMARY KEY (attempt_id, component, band));
CREATE TABLE repeated_saves (
    station_id BIGINT NOT NULL REFERENCES stations (id),
    serial TEXT NOT NULL,
    tested_at TEXT NOT NULL,
    marks {bytes} NOT NULL,
    PRIMARY KEY (station_id, serial, tested_at, marks));
CREATE INDEX repeated_saves_by_unit ON repeated_saves (serial {bytewise});
CREATE VIEW results AS SELECT serial, complete FROM attempts;
