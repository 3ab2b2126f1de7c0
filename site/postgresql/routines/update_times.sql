-- When entities and field definitions last changed; clients compare it with the time of their own lists.

CREATE OR REPLACE FUNCTION Ea_Last_Entity_Update () RETURNS timestamp LANGUAGE sql STABLE AS $$
  SELECT max(Last_Update) FROM EA_UPDATE_TIME
$$
/
CREATE OR REPLACE FUNCTION Last_Field_Update () RETURNS timestamp LANGUAGE sql STABLE AS $$
  SELECT max(Changed) FROM EA_FIELD
$$
/
