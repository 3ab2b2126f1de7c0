-- When entities and field definitions last changed; clients compare it with the time of their own lists.

CREATE OR REPLACE FUNCTION Ea_Last_Entity_Update RETURN DATE AS
BEGIN
  SELECT MAX(Last_Update) AS return_value FROM EA_UPDATE_TIME;
END;
/
CREATE OR REPLACE FUNCTION Last_Field_Update RETURN DATE AS
BEGIN
  SELECT MAX(Changed) AS return_value FROM EA_FIELD;
END;
/
