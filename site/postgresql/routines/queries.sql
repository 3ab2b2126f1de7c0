-- Package ZR_Query: the copy of a stored query for one filter, and its text.

CREATE SCHEMA IF NOT EXISTS ZR_Query
/
-- Makes the copy of a query for a filter, or finds it, and gives it the query's text followed by the filter's
-- condition. ordFilterID comes in as the filter and goes out as the id of the copy.
CREATE OR REPLACE PROCEDURE ZR_Query.CreateFQuery (ordQueryID numeric, INOUT ordFilterID numeric) LANGUAGE plpgsql AS $$
DECLARE
  filter CONSTANT numeric := ordFilterID;
  base ZR_QUERY_DEF;
  copy ZR_QUERY_DEF;
BEGIN
  SELECT * INTO copy FROM ZR_QUERY_DEF q WHERE q.Base_Id = ordQueryID AND q.Filter_Id = filter;
  SELECT * INTO base FROM ZR_QUERY_DEF q WHERE q.Id = ordQueryID;
  IF copy.Id IS NULL THEN
    copy := ROW(nextval('ZR_QUERY_SQ'), coalesce(base.Name, '?') || ' (filtered)', nextval('PM_StringTable_SQ'),
                ordQueryID, filter);
    INSERT INTO ZR_QUERY_DEF SELECT copy.*;
  END IF;
  DELETE FROM PM_StringTable s WHERE s.Id = copy.String_Id;
  INSERT INTO PM_StringTable (Id, Ordinal, StringData)
  SELECT copy.String_Id, s.Ordinal, s.StringData FROM PM_StringTable s WHERE s.Id = base.String_Id;
  INSERT INTO PM_StringTable (Id, Ordinal, StringData)
  SELECT copy.String_Id, (SELECT coalesce(max(s.Ordinal), 0) + 1 FROM PM_StringTable s WHERE s.Id = copy.String_Id),
         ' AND (' || f.Condition || ')'
    FROM ZR_FILTER f WHERE f.Id = filter;
  ordFilterID := copy.Id;
END
$$
/
-- Gives the copy of a query for a filter the text of the query again, without the condition.
CREATE OR REPLACE PROCEDURE ZR_Query.CopyNFQuery (ordQueryID numeric, ordFilterID numeric) LANGUAGE plpgsql AS $$
DECLARE
  copy_text numeric;
  base_text numeric;
BEGIN
  SELECT c.String_Id, q.String_Id INTO copy_text, base_text FROM ZR_QUERY_DEF c JOIN ZR_QUERY_DEF q ON q.Id = c.Base_Id
   WHERE c.Base_Id = ordQueryID AND c.Filter_Id = ordFilterID;
  IF NOT FOUND THEN
    PERFORM raise_application_error(-20031, 'The query has no copy for this filter.');
  END IF;
  DELETE FROM PM_StringTable s WHERE s.Id = copy_text;
  INSERT INTO PM_StringTable (Id, Ordinal, StringData)
  SELECT copy_text, s.Ordinal, s.StringData FROM PM_StringTable s WHERE s.Id = base_text;
END
$$
/
