-- Package ZR_Query: the copy of a stored query for one filter, and its text.

-- Makes the copy of a query for a filter, or finds it, and gives it the query's text followed by the filter's
-- condition. ordFilterID comes in as the filter and goes out as the id of the copy.
CREATE OR REPLACE PROCEDURE ZR_Query.CreateFQuery (ordQueryID IN NUMBER, ordFilterID IN OUT NUMBER) AS
BEGIN
  SELECT Id AS copy_id, String_Id AS copy_string_id FROM ZR_QUERY_DEF
   WHERE Base_Id = :ordQueryID AND Filter_Id = :ordFilterID;
  SELECT ZR_QUERY_SQ.NEXTVAL AS new_id, PM_StringTable_SQ.NEXTVAL AS copy_string_id FROM DUAL
   WHERE :copy_id IS NULL;
  SELECT Name AS base_name, String_Id AS base_string_id FROM ZR_QUERY_DEF WHERE Id = :ordQueryID;
  INSERT INTO ZR_QUERY_DEF (Id, Name, String_Id, Base_Id, Filter_Id)
  SELECT :new_id, NVL(:base_name, '?') || ' (filtered)', :copy_string_id, :ordQueryID, :ordFilterID FROM DUAL
   WHERE :copy_id IS NULL;
  DELETE FROM PM_StringTable WHERE Id = :copy_string_id;
  INSERT INTO PM_StringTable (Id, Ordinal, StringData)
  SELECT :copy_string_id, Ordinal, StringData FROM PM_StringTable WHERE Id = :base_string_id;
  SELECT NVL(MAX(Ordinal), 0) + 1 AS last_ordinal FROM PM_StringTable WHERE Id = :copy_string_id;
  INSERT INTO PM_StringTable (Id, Ordinal, StringData)
  SELECT :copy_string_id, :last_ordinal, ' AND (' || Condition || ')' FROM ZR_FILTER WHERE Id = :ordFilterID;
  SELECT NVL(:copy_id, :new_id) AS ordFilterID FROM DUAL;
END;
/
-- Gives the copy of a query for a filter the text of the query again, without the condition.
CREATE OR REPLACE PROCEDURE ZR_Query.CopyNFQuery (ordQueryID IN NUMBER, ordFilterID IN NUMBER) AS
BEGIN
  SELECT c.String_Id AS copy_string_id, q.String_Id AS base_string_id FROM ZR_QUERY_DEF c, ZR_QUERY_DEF q
   WHERE c.Base_Id = :ordQueryID AND c.Filter_Id = :ordFilterID AND q.Id = c.Base_Id;
  SELECT RAISE_APPLICATION_ERROR(-20031, 'The query has no copy for this filter.') FROM DUAL
   WHERE :copy_string_id IS NULL;
  DELETE FROM PM_StringTable WHERE Id = :copy_string_id;
  INSERT INTO PM_StringTable (Id, Ordinal, StringData)
  SELECT :copy_string_id, Ordinal, StringData FROM PM_StringTable WHERE Id = :base_string_id;
END;
/
