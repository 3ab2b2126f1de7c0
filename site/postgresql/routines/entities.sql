-- Packages EA_Client and EA_DD: common entities and their equivalents.
-- Every change moves the entity update time by a second at least, so that a client which read the time within the same
-- second still sees that its list is old.

CREATE SCHEMA IF NOT EXISTS EA_Client
/
CREATE SCHEMA IF NOT EXISTS EA_DD
/
CREATE OR REPLACE PROCEDURE EA_Client.Touch_Entities () LANGUAGE sql AS $$
  UPDATE EA_UPDATE_TIME SET Last_Update = greatest(sysdate(), Last_Update + interval '1 second')
$$
/
-- The id of the new entity. Parent 0 makes a root; an unknown parent fails on the foreign key.
CREATE OR REPLACE FUNCTION EA_Client.Add_Common_Entity (sEntityName varchar, ordParent numeric)
RETURNS numeric LANGUAGE plpgsql AS $$
DECLARE
  new_id CONSTANT numeric := nextval('EA_COMMON_ENTITY_SQ');
BEGIN
  INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
  VALUES (new_id, sEntityName, nullif(ordParent, 0), sysdate());
  CALL EA_Client.Touch_Entities();
  RETURN new_id;
END
$$
/
-- Refuses to hang an entity below itself; looks three levels down, which is as deep as the client's tree goes.
CREATE OR REPLACE PROCEDURE EA_Client.Reparent_Common_Entity (ordEntity numeric, ordParent numeric)
LANGUAGE plpgsql AS $$
BEGIN
  IF NOT EXISTS (SELECT 1 FROM EA_COMMON_ENTITY WHERE Id = ordEntity) THEN
    PERFORM raise_application_error(-20022, 'Common entity does not exist.');
  END IF;
  IF EXISTS (SELECT 1 FROM EA_COMMON_ENTITY a
               LEFT JOIN EA_COMMON_ENTITY b ON b.Id = a.Parent_Id
               LEFT JOIN EA_COMMON_ENTITY c ON c.Id = b.Parent_Id
              WHERE a.Id = ordParent AND ordEntity IN (a.Parent_Id, b.Parent_Id, c.Parent_Id)) THEN
    PERFORM raise_application_error(-20023, 'Common entity cannot be moved below itself.');
  END IF;
  UPDATE EA_COMMON_ENTITY SET Parent_Id = nullif(ordParent, 0) WHERE Id = ordEntity;
  CALL EA_Client.Touch_Entities();
END
$$
/
-- Fails on the foreign keys while the entity has children or equivalents.
CREATE OR REPLACE PROCEDURE EA_Client.Remove_Common_Entity (ordEntity numeric) LANGUAGE plpgsql AS $$
BEGIN
  DELETE FROM EA_COMMON_ENTITY WHERE Id = ordEntity;
  IF NOT FOUND THEN
    PERFORM raise_application_error(-20022, 'Common entity does not exist.');
  END IF;
  CALL EA_Client.Touch_Entities();
END
$$
/
CREATE OR REPLACE PROCEDURE EA_DD.EA_Add_Entity_EQV (ordVersion numeric, sCommonName varchar, sEntityLabel varchar)
LANGUAGE plpgsql AS $$
BEGIN
  INSERT INTO EA_ENTITY_EQV (Version_Id, Entity_Label, Common_Id)
  SELECT ordVersion, sEntityLabel, Id FROM EA_COMMON_ENTITY WHERE Name = sCommonName;
  IF NOT FOUND THEN
    PERFORM raise_application_error(-20022, 'Common entity does not exist.');
  END IF;
  CALL EA_Client.Touch_Entities();
END
$$
/
