-- Packages EA_Client and EA_DD: common entities and their equivalents.
-- Every change moves the entity update time by a second at least, so that a client which read the time within the same
-- second still sees that its list is old.

-- The id of the new entity. Parent 0 makes a root; an unknown parent fails on the foreign key.
CREATE OR REPLACE FUNCTION EA_Client.Add_Common_Entity (sEntityName IN VARCHAR2, ordParent IN NUMBER)
RETURN NUMBER AS
BEGIN
  SELECT EA_COMMON_ENTITY_SQ.NEXTVAL AS new_id FROM DUAL;
  INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
  VALUES (:new_id, :sEntityName, CASE WHEN :ordParent = 0 THEN NULL ELSE :ordParent END, SYSDATE);
  UPDATE EA_UPDATE_TIME
     SET Last_Update = CASE WHEN SYSDATE > Last_Update THEN SYSDATE ELSE Last_Update + 1.0/86400 END;
  SELECT :new_id AS return_value FROM DUAL;
END;
/
-- Refuses to hang an entity below itself; looks three levels down, which is as deep as the client's tree goes.
CREATE OR REPLACE PROCEDURE EA_Client.Reparent_Common_Entity (ordEntity IN NUMBER, ordParent IN NUMBER) AS
BEGIN
  SELECT RAISE_APPLICATION_ERROR(-20022, 'Common entity does not exist.') FROM DUAL
   WHERE NOT EXISTS (SELECT 1 FROM EA_COMMON_ENTITY WHERE Id = :ordEntity);
  SELECT RAISE_APPLICATION_ERROR(-20023, 'Common entity cannot be moved below itself.') FROM DUAL
   WHERE EXISTS (SELECT 1 FROM EA_COMMON_ENTITY WHERE Id = :ordParent AND Parent_Id = :ordEntity)
      OR EXISTS (SELECT 1 FROM EA_COMMON_ENTITY a, EA_COMMON_ENTITY b
                  WHERE a.Id = :ordParent AND b.Id = a.Parent_Id AND b.Parent_Id = :ordEntity)
      OR EXISTS (SELECT 1 FROM EA_COMMON_ENTITY a, EA_COMMON_ENTITY b, EA_COMMON_ENTITY c
                  WHERE a.Id = :ordParent AND b.Id = a.Parent_Id AND c.Id = b.Parent_Id AND c.Parent_Id = :ordEntity);
  UPDATE EA_COMMON_ENTITY SET Parent_Id = CASE WHEN :ordParent = 0 THEN NULL ELSE :ordParent END
   WHERE Id = :ordEntity;
  UPDATE EA_UPDATE_TIME
     SET Last_Update = CASE WHEN SYSDATE > Last_Update THEN SYSDATE ELSE Last_Update + 1.0/86400 END;
END;
/
-- Fails on the foreign keys while the entity has children or equivalents.
CREATE OR REPLACE PROCEDURE EA_Client.Remove_Common_Entity (ordEntity IN NUMBER) AS
BEGIN
  SELECT RAISE_APPLICATION_ERROR(-20022, 'Common entity does not exist.') FROM DUAL
   WHERE NOT EXISTS (SELECT 1 FROM EA_COMMON_ENTITY WHERE Id = :ordEntity);
  DELETE FROM EA_COMMON_ENTITY WHERE Id = :ordEntity;
  UPDATE EA_UPDATE_TIME
     SET Last_Update = CASE WHEN SYSDATE > Last_Update THEN SYSDATE ELSE Last_Update + 1.0/86400 END;
END;
/
CREATE OR REPLACE PROCEDURE EA_DD.EA_Add_Entity_EQV
  (ordVersion IN NUMBER, sCommonName IN VARCHAR2, sEntityLabel IN VARCHAR2) AS
BEGIN
  SELECT RAISE_APPLICATION_ERROR(-20022, 'Common entity does not exist.') FROM DUAL
   WHERE NOT EXISTS (SELECT 1 FROM EA_COMMON_ENTITY WHERE Name = :sCommonName);
  INSERT INTO EA_ENTITY_EQV (Version_Id, Entity_Label, Common_Id)
  SELECT :ordVersion, :sEntityLabel, Id FROM EA_COMMON_ENTITY WHERE Name = :sCommonName;
  UPDATE EA_UPDATE_TIME
     SET Last_Update = CASE WHEN SYSDATE > Last_Update THEN SYSDATE ELSE Last_Update + 1.0/86400 END;
END;
/
