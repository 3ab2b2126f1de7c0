-- Sequences, with the failures that Oracle has.

CREATE OR REPLACE FUNCTION sabrel_dictionary.next_value (sequence text) RETURNS bigint LANGUAGE plpgsql AS $$
DECLARE
  found CONSTANT regclass := to_regclass(sequence);
BEGIN
  IF found IS NULL THEN
    RAISE EXCEPTION 'sequence does not exist: %', upper(sequence) USING ERRCODE = 'N2289';
  END IF;
  RETURN nextval(found);
END
$$
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.current_value (sequence text) RETURNS bigint LANGUAGE plpgsql AS $$
DECLARE
  found CONSTANT regclass := to_regclass(sequence);
BEGIN
  IF found IS NULL THEN
    RAISE EXCEPTION 'sequence does not exist: %', upper(sequence) USING ERRCODE = 'N2289';
  END IF;
  RETURN currval(found);
EXCEPTION WHEN object_not_in_prerequisite_state THEN
  RAISE EXCEPTION 'sequence %.CURRVAL is not yet defined in this session', upper(sequence) USING ERRCODE = 'N8002';
END
$$
/
CREATE OR REPLACE PROCEDURE sabrel_dictionary.drop_sequence (sequence text) LANGUAGE plpgsql AS $$
BEGIN
  IF to_regclass(sequence) IS NULL THEN
    RAISE EXCEPTION 'sequence does not exist: %', upper(sequence) USING ERRCODE = 'N2289';
  END IF;
  EXECUTE 'DROP SEQUENCE ' || sequence;
END
$$
/
