-- SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
-- SPDX-License-Identifier: GPL-3.0-or-later

-- The tables; docs/database.md explains them. What stands in braces differs between the databases
-- and is in sqldialect.cpp. Columns are in the order that a migration leads to.
CREATE TABLE schema_version (version INTEGER NOT NULL);

INSERT INTO schema_version VALUES (3);

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
    passed INTEGER NOT NULL CHECK (passed IN (0, 1)),
    aborted_component INTEGER,
    tests_18 INTEGER NOT NULL DEFAULT 0 CHECK (tests_18 IN (0, 1)),
    run TEXT,
    started_at TEXT,
    save_number INTEGER,
    UNIQUE (station_id, serial, tested_at, marks));

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
    run TEXT,
    save_number INTEGER,
    PRIMARY KEY (station_id, serial, tested_at, marks));
