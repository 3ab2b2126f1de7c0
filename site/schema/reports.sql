-- Reports, the groups in which they run, their mails and notes, and what has been exported to which server.

CREATE TABLE PM_CHANSETPLAN (
  Id             NUMBER(10)    PRIMARY KEY,
  Name           VARCHAR2(64)  NOT NULL UNIQUE
)
/
CREATE TABLE PM_DTSCOPE (
  Id             NUMBER(10)    PRIMARY KEY,
  Name           VARCHAR2(64)  NOT NULL UNIQUE
)
/
CREATE TABLE PM_REPORT (
  Id             NUMBER(10)    PRIMARY KEY,
  Name           VARCHAR2(64)  NOT NULL UNIQUE,
  Owner_Id       NUMBER(10)    NOT NULL REFERENCES EA_USER (Id),
  CHANSETPLANID  NUMBER(10)    REFERENCES PM_CHANSETPLAN (Id),
  DTSCOPEID      NUMBER(10)    REFERENCES PM_DTSCOPE (Id),
  ServerGroupID  NUMBER(10)    REFERENCES EA_SERVER_GROUP (Id),
  Day_Count      NUMBER(5)     NOT NULL CHECK (Day_Count >= 1),
  Entity_Count   NUMBER(10)    NOT NULL,
  Busy_Hour      CHAR(1)       NOT NULL CHECK (Busy_Hour IN ('Y', 'N')),
  Changed        DATE          NOT NULL
)
/
CREATE TABLE JOB_GROUP (
  ID             NUMBER(10)    PRIMARY KEY,
  NAME           VARCHAR2(64)  NOT NULL UNIQUE
)
/
CREATE TABLE JOB_GROUP_ITEM (
  GROUP_ID       NUMBER(10)    NOT NULL REFERENCES JOB_GROUP (ID),
  DOCUMENT_ID    NUMBER(10)    NOT NULL REFERENCES PM_REPORT (Id),
  PRIMARY KEY (GROUP_ID, DOCUMENT_ID)
)
/
CREATE TABLE PM_Note (
  Id             NUMBER(10)    PRIMARY KEY,
  Report_Id      NUMBER(10)    NOT NULL REFERENCES PM_REPORT (Id),
  Author         VARCHAR2(64)  NOT NULL,
  Note_Text      VARCHAR2(2000),
  Created        DATE          NOT NULL
)
/
CREATE SEQUENCE PM_NOTE_SQ START WITH 100
/
CREATE TABLE PM_EMAIL (
  Id             NUMBER(10)    PRIMARY KEY,
  Report_Id      NUMBER(10)    NOT NULL REFERENCES PM_REPORT (Id),
  Recipient      VARCHAR2(255) NOT NULL,
  Subject        VARCHAR2(255)
)
/
-- The last export of a report to a server.
CREATE TABLE EA_EXPORT (
  Document_Id    NUMBER(10)    NOT NULL REFERENCES PM_REPORT (Id),
  Server_Id      NUMBER(10)    NOT NULL REFERENCES EA_SERVER (Id),
  Exported       DATE          NOT NULL,
  PRIMARY KEY (Document_Id, Server_Id)
)
/
-- Working rows of one look: what a user found due for export. Time_Stamp is the client's text of the time, which names
-- the look together with the user; the client clears it afterwards.
CREATE TABLE EA_EXP_REQUIRED (
  User_Id        NUMBER(10)    NOT NULL REFERENCES EA_USER (Id),
  Time_Stamp     VARCHAR2(19)  NOT NULL,
  Group_Id       NUMBER(10)    NOT NULL REFERENCES JOB_GROUP (ID),
  Document_Id    NUMBER(10)    NOT NULL REFERENCES PM_REPORT (Id),
  Server_Id      NUMBER(10)    NOT NULL REFERENCES EA_SERVER (Id),
  PRIMARY KEY (User_Id, Time_Stamp, Group_Id, Document_Id, Server_Id)
)
/
