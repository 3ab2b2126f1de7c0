-- How many equivalents a common entity has. Installations before release 7 do not have this function.

CREATE OR REPLACE FUNCTION EA_Client.Entity_Has_Equiv (ordID IN NUMBER) RETURN NUMBER AS
BEGIN
  SELECT COUNT(*) AS return_value FROM EA_ENTITY_EQV WHERE Common_Id = :ordID;
END;
/
