-- How many equivalents a common entity has. Installations before release 7 do not have this function.

CREATE OR REPLACE FUNCTION EA_Client.Entity_Has_Equiv (ordID numeric) RETURNS numeric LANGUAGE sql STABLE AS $$
  SELECT count(*)::numeric FROM EA_ENTITY_EQV WHERE Common_Id = ordID
$$
/
