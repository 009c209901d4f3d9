-- The password of each login, as a salted Argon2id hash in the hashing library's own encoded form
-- (algorithm, cost, salt and hash in one text); never the password itself. NULL: the account has
-- no password yet and logs in over the network only once one is set (vdserver --set-password).
ALTER TABLE accounts ADD COLUMN password_hash TEXT;
