-- The store of the embedded server. The same text makes the tables on SQLite and on PostgreSQL;
-- ${UID} (the key of an object), ${BLOB} and ${SERIAL} (a key that counts itself) are the three
-- words in which the two differ.
--
-- Links between objects are kept once, in object_inherit, by the object that holds them. Every
-- table that belongs to an object goes with it when it is removed. The checks of the references
-- wait for the end of the transaction, so that an object and what belongs to it may be written in
-- any order within one.

CREATE TABLE schema_migrations (
    version INTEGER PRIMARY KEY,
    applied TEXT NOT NULL
);

-- The last uid handed out. Uids only grow: one that was given is never given again, not even
-- after its object is gone.
CREATE TABLE uid_counter (
    id INTEGER PRIMARY KEY CHECK (id = 1),
    last_uid BIGINT NOT NULL
);
INSERT INTO uid_counter (id, last_uid) VALUES (1, 0);

-- Every object, whatever its type. Its parameters are a CBOR map of text to text.
CREATE TABLE objects (
    uid ${UID} PRIMARY KEY,
    type TEXT NOT NULL,
    parent_id BIGINT NOT NULL DEFAULT 0,
    modified TEXT,
    parameters ${BLOB}
);

-- The links of an object (parent_id) to others (child_id), of a type (ref_type), in the order in
-- which the object holds them (position). Dates are ISO 8601 text. The key leads with parent_id,
-- which is what the links of one object, a worker's card among them, are looked up by.
CREATE TABLE object_inherit (
    parent_id BIGINT NOT NULL REFERENCES objects (uid) ON DELETE CASCADE DEFERRABLE INITIALLY DEFERRED,
    position INTEGER NOT NULL,
    child_id BIGINT NOT NULL,
    ref_type INTEGER NOT NULL,
    priority INTEGER NOT NULL DEFAULT 0,
    date_from TEXT,
    date_to TEXT,
    PRIMARY KEY (parent_id, position)
);

-- Large values of an object, as a worker's photo.
CREATE TABLE blobs (
    object_id BIGINT NOT NULL REFERENCES objects (uid) ON DELETE CASCADE DEFERRABLE INITIALLY DEFERRED,
    name TEXT NOT NULL,
    data ${BLOB},
    PRIMARY KEY (object_id, name)
);

-- Workers whose photo is drawn when it is first asked for, rather than stored.
CREATE TABLE drawn_portraits (
    worker_id BIGINT PRIMARY KEY REFERENCES objects (uid) ON DELETE CASCADE DEFERRABLE INITIALLY DEFERRED
);

-- Biometric templates, in the order in which the worker has them (position).
CREATE TABLE fingers (
    id BIGINT NOT NULL,
    user_object_id BIGINT NOT NULL REFERENCES objects (uid) ON DELETE CASCADE DEFERRABLE INITIALLY DEFERRED,
    position INTEGER NOT NULL,
    finger_index INTEGER NOT NULL,
    kind INTEGER NOT NULL,
    quality INTEGER NOT NULL,
    device BIGINT NOT NULL,
    data ${BLOB},
    extra ${BLOB},
    PRIMARY KEY (user_object_id, position)
);

-- The settings of the database object.
CREATE TABLE settings (
    name TEXT PRIMARY KEY,
    value TEXT NOT NULL
);

CREATE TABLE schedules (
    id INTEGER PRIMARY KEY,
    name TEXT NOT NULL,
    intervals TEXT NOT NULL
);

-- Users who may log in, with their rights joined by ";".
CREATE TABLE accounts (
    user_id BIGINT PRIMARY KEY REFERENCES objects (uid) ON DELETE CASCADE DEFERRABLE INITIALLY DEFERRED,
    roles TEXT NOT NULL
);

CREATE TABLE syslog (
    id ${SERIAL},
    code BIGINT NOT NULL,
    user_id TEXT NOT NULL,
    message TEXT NOT NULL,
    logged_at TEXT
);
