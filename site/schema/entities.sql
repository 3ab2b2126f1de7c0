-- Enterprise aggregation: servers, the entities of each server's data dictionary, the common entities above them and
-- which entity of a server is the equivalent of which common entity.

CREATE TABLE EA_module (
  Module_ID     NUMBER(10)    PRIMARY KEY,
  Module_Name   VARCHAR2(40)  NOT NULL UNIQUE
)
/
CREATE TABLE EA_Module_Version (
  Module_ID     NUMBER(10)    NOT NULL REFERENCES EA_module (Module_ID),
  Version_ID    NUMBER(10)    NOT NULL,
  Version_Name  VARCHAR2(64),
  PRIMARY KEY (Module_ID, Version_ID)
)
/
CREATE TABLE EA_SERVER (
  Id            NUMBER(10)    PRIMARY KEY,
  Name          VARCHAR2(64)  NOT NULL UNIQUE,
  Host          VARCHAR2(128) NOT NULL,
  Port          NUMBER(5)     NOT NULL CHECK (Port BETWEEN 1 AND 65535),
  Active        CHAR(1)       NOT NULL CHECK (Active IN ('Y', 'N'))
)
/
CREATE TABLE EA_SERVER_GROUP (
  Id            NUMBER(10)    PRIMARY KEY,
  Name          VARCHAR2(64)  NOT NULL UNIQUE
)
/
CREATE TABLE EA_SERVER_GROUP_MEMBER (
  Server_Group_Id NUMBER(10)  NOT NULL REFERENCES EA_SERVER_GROUP (Id),
  Server_Id       NUMBER(10)  NOT NULL REFERENCES EA_SERVER (Id),
  PRIMARY KEY (Server_Group_Id, Server_Id)
)
/
-- One data dictionary of a server, as it was loaded.
CREATE TABLE EA_DD_VERSION (
  Id            NUMBER(10)    PRIMARY KEY,
  Server_Id     NUMBER(10)    NOT NULL REFERENCES EA_SERVER (Id),
  Version_Name  VARCHAR2(40)  NOT NULL,
  Loaded        DATE          NOT NULL
)
/
CREATE TABLE EA_ENTITY (
  Id            NUMBER(10)    PRIMARY KEY,
  Version_Id    NUMBER(10)    NOT NULL REFERENCES EA_DD_VERSION (Id),
  Label         VARCHAR2(64)  NOT NULL,
  Entity_Type   VARCHAR2(20)  NOT NULL,
  Carrier_Count NUMBER(4)     NOT NULL,
  Latitude      NUMBER(8,5),
  Longitude     NUMBER(8,5),
  CONSTRAINT EA_ENTITY_LABEL_UK UNIQUE (Version_Id, Label)
)
/
-- The tree of common entities; one without a parent is a root.
CREATE TABLE EA_COMMON_ENTITY (
  Id            NUMBER(10)    PRIMARY KEY,
  Name          VARCHAR2(64)  NOT NULL,
  Parent_Id     NUMBER(10),
  Created       DATE          NOT NULL,
  CONSTRAINT EA_COMMON_ENTITY_NAME_UK UNIQUE (Name),
  CONSTRAINT EA_COMMON_ENTITY_PARENT_FK FOREIGN KEY (Parent_Id) REFERENCES EA_COMMON_ENTITY (Id),
  CONSTRAINT EA_COMMON_ENTITY_PARENT_CK CHECK (Parent_Id <> Id)
)
/
CREATE INDEX EA_COMMON_ENTITY_PARENT_IX ON EA_COMMON_ENTITY (Parent_Id)
/
CREATE SEQUENCE EA_COMMON_ENTITY_SQ START WITH 100
/
-- Entity_Label may name an entity that the server has not sent yet.
CREATE TABLE EA_ENTITY_EQV (
  Version_Id    NUMBER(10)    NOT NULL,
  Entity_Label  VARCHAR2(64)  NOT NULL,
  Common_Id     NUMBER(10)    NOT NULL,
  PRIMARY KEY (Version_Id, Entity_Label),
  CONSTRAINT EA_ENTITY_EQV_VERSION_FK FOREIGN KEY (Version_Id) REFERENCES EA_DD_VERSION (Id),
  CONSTRAINT EA_ENTITY_EQV_COMMON_FK FOREIGN KEY (Common_Id) REFERENCES EA_COMMON_ENTITY (Id)
)
/
CREATE INDEX EA_ENTITY_EQV_COMMON_IX ON EA_ENTITY_EQV (Common_Id)
/
CREATE TABLE EA_FIELD (
  Id            NUMBER(10)    PRIMARY KEY,
  Module_ID     NUMBER(10)    NOT NULL REFERENCES EA_module (Module_ID),
  Name          VARCHAR2(64)  NOT NULL,
  Formula       VARCHAR2(1000),
  Changed       DATE          NOT NULL,
  UNIQUE (Module_ID, Name)
)
/
-- One row: when the common entities or their equivalents last changed. A row of its own, because a removal counts too.
CREATE TABLE EA_UPDATE_TIME (
  Id            NUMBER(1)     PRIMARY KEY CHECK (Id = 1),
  Last_Update   DATE          NOT NULL
)
/
