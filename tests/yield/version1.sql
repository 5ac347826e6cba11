-- SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
-- SPDX-License-Identifier: GPL-3.0-or-later

-- The tables of release 1.1.0, and a view of a user.
CREATE TABLE schema_version (version INTEGER NOT NULL);
INSERT INTO schema_version VALUES (1);
CREATE TABLE stations (
    id {id},
    name TEXT {bytewise} NOT NULL UNIQUE,
    tests_18 INTEGER NOT NULL DEFAULT 0 CHECK (tests_18 IN (0, 1)));
CREATE TABLE attempts (
    id {id},
    station_id BIGINT NOT NULL REFERENCES stations (id),
    serial TEXT {bytewise} NOT NULL,
    tested_at TEXT {bytewise} NOT NULL,
    marks {bytes} NOT NULL,
    complete INTEGER NOT NULL CHECK (complete IN (0, 1)),
    UNIQUE (station_id, serial, tested_at, marks));
CREATE INDEX attempts_by_time ON attempts (tested_at);
CREATE INDEX attempts_by_serial ON attempts (serial, tested_at, id, station_id, complete);
CREATE INDEX attempts_by_day ON attempts (substr(tested_at, 1, 10), station_id, complete);
CREATE INDEX attempts_not_complete ON attempts (tested_at, id, serial, station_id)
    WHERE complete = 0;
CREATE TABLE missed_bands (
    attempt_id BIGINT NOT NULL REFERENCES attempts (id) ON DELETE CASCADE,
    component INTEGER NOT NULL,
    band INTEGER NOT NULL,
    PRIMARY KEY (attempt_id, component, band));
CREATE TABLE other_saves (
    station_id BIGINT NOT NULL REFERENCES stations (id),
    serial TEXT {bytewise} NOT NULL,
    tested_at TEXT {bytewise} NOT NULL,
    marks {bytes} NOT NULL,
    PRIMARY KEY (station_id, serial, tested_at, marks));
CREATE VIEW results AS SELECT serial, complete FROM attempts;
