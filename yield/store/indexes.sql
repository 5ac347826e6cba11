-- SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
-- SPDX-License-Identifier: GPL-3.0-or-later

-- The indexes, of new and of migrated tables.
-- A run is one attempt, in the whole database.
CREATE UNIQUE INDEX attempts_by_run ON attempts (run);

-- The order of the report, with all that it reads.
CREATE INDEX attempts_by_unit ON attempts
    (serial {bytewise}, tested_at {bytewise}, station_id, marks, tests_18, started_at);

-- The last log of each station.
CREATE INDEX attempts_by_station ON attempts (station_id, tested_at {bytewise});

CREATE INDEX repeated_saves_by_station ON repeated_saves (station_id, tested_at {bytewise});

CREATE INDEX repeated_saves_by_unit ON repeated_saves (serial {bytewise}, tested_at {bytewise});

CREATE INDEX repeated_saves_by_run ON repeated_saves (run);
