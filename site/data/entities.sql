-- Modules, servers, their entities (96 cells a server) and the tree of common entities. Server group Migration holds a
-- server that is switched off, group Spare holds none. Harbour East has equivalents, nothing refers to Unused Market.

INSERT INTO EA_module (Module_ID, Module_Name) VALUES (1,'Traffic')
/
INSERT INTO EA_module (Module_ID, Module_Name) VALUES (2,'PCMD')
/
INSERT INTO EA_module (Module_ID, Module_Name) VALUES (3,'EVDO Call Detail Records')
/
INSERT INTO EA_module (Module_ID, Module_Name) VALUES (4,'Soft Alarms')
/
INSERT INTO EA_module (Module_ID, Module_Name) VALUES (5,'SES')
/
INSERT INTO EA_Module_Version (Module_ID, Version_ID, Version_Name) VALUES (1,1,'Traffic 6.0')
/
INSERT INTO EA_Module_Version (Module_ID, Version_ID, Version_Name) VALUES (1,2,'Traffic 7.3')
/
INSERT INTO EA_Module_Version (Module_ID, Version_ID, Version_Name) VALUES (2,1,'PCMD 7.3')
/
INSERT INTO EA_Module_Version (Module_ID, Version_ID, Version_Name) VALUES (3,1,'EVDO 7.2')
/
INSERT INTO EA_Module_Version (Module_ID, Version_ID, Version_Name) VALUES (3,2,'EVDO 7.3')
/
INSERT INTO EA_Module_Version (Module_ID, Version_ID, Version_Name) VALUES (4,1,NULL)
/
INSERT INTO EA_SERVER (Id, Name, Host, Port, Active) VALUES (1,'Northgate','northgate.norvasta.example',5001,'Y')
/
INSERT INTO EA_SERVER (Id, Name, Host, Port, Active) VALUES (2,'Harbour','harbour.norvasta.example',5001,'Y')
/
INSERT INTO EA_SERVER (Id, Name, Host, Port, Active) VALUES (3,'Southfield','southfield.norvasta.example',5002,'N')
/
INSERT INTO EA_SERVER_GROUP (Id, Name) VALUES (1,'All Active')
/
INSERT INTO EA_SERVER_GROUP (Id, Name) VALUES (2,'Northgate Only')
/
INSERT INTO EA_SERVER_GROUP (Id, Name) VALUES (3,'Migration')
/
INSERT INTO EA_SERVER_GROUP (Id, Name) VALUES (4,'Spare')
/
INSERT INTO EA_SERVER_GROUP_MEMBER (Server_Group_Id, Server_Id) VALUES (1,1)
/
INSERT INTO EA_SERVER_GROUP_MEMBER (Server_Group_Id, Server_Id) VALUES (1,2)
/
INSERT INTO EA_SERVER_GROUP_MEMBER (Server_Group_Id, Server_Id) VALUES (2,1)
/
INSERT INTO EA_SERVER_GROUP_MEMBER (Server_Group_Id, Server_Id) VALUES (3,2)
/
INSERT INTO EA_SERVER_GROUP_MEMBER (Server_Group_Id, Server_Id) VALUES (3,3)
/
INSERT INTO EA_DD_VERSION (Id, Server_Id, Version_Name, Loaded)
VALUES (1,1,'North 2024-02',TO_DATE('2024-02-01 02:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_DD_VERSION (Id, Server_Id, Version_Name, Loaded)
VALUES (2,2,'Harbour 2024-02',TO_DATE('2024-02-01 02:10:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_DD_VERSION (Id, Server_Id, Version_Name, Loaded)
VALUES (3,3,'South 2023-11',TO_DATE('2023-11-01 02:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_ENTITY (Id, Version_Id, Label, Entity_Type, Carrier_Count, Latitude, Longitude)
SELECT 1000 * v.Id + 10 * t.N + u.N, v.Id, 'CELL' || v.Id || t.N || u.N,
       CASE WHEN MOD(u.N, 4) = 3 THEN 'Micro Cell' ELSE 'Cell' END, 1 + MOD(t.N * 7 + u.N * 3 + v.Id, 6),
       40.1 + v.Id + t.N * 0.021 + u.N * 0.0037, -88.25 - v.Id + t.N * 0.0171 - u.N * 0.0049
  FROM EA_DD_VERSION v, PM_PIVOT t, PM_PIVOT u
 WHERE 10 * t.N + u.N BETWEEN 1 AND 96
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (1,'Network',NULL,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (2,'North Region',1,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (3,'Harbour Region',1,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (4,'South Region',1,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (5,'North City',2,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (6,'North Valley',2,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (7,'Harbour East',3,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (8,'Harbour West',3,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (9,'South Plain',4,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_COMMON_ENTITY (Id, Name, Parent_Id, Created)
VALUES (10,'Unused Market',4,TO_DATE('2023-02-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_ENTITY_EQV (Version_Id, Entity_Label, Common_Id)
SELECT Version_Id, Label, 5 FROM EA_ENTITY WHERE Id BETWEEN 1001 AND 1040
/
INSERT INTO EA_ENTITY_EQV (Version_Id, Entity_Label, Common_Id)
SELECT Version_Id, Label, 6 FROM EA_ENTITY WHERE Id BETWEEN 1041 AND 1090
/
INSERT INTO EA_ENTITY_EQV (Version_Id, Entity_Label, Common_Id)
SELECT Version_Id, Label, 7 FROM EA_ENTITY WHERE Id BETWEEN 2001 AND 2060
/
INSERT INTO EA_ENTITY_EQV (Version_Id, Entity_Label, Common_Id)
SELECT Version_Id, Label, 9 FROM EA_ENTITY WHERE Id BETWEEN 3001 AND 3030
/
INSERT INTO EA_FIELD (Id, Module_ID, Name, Formula, Changed)
VALUES (1,1,'Attempts','ORIG_ATT + TERM_ATT',TO_DATE('2023-03-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_FIELD (Id, Module_ID, Name, Formula, Changed)
VALUES (2,1,'Failures','SETUP_FAIL + BLOCKED',TO_DATE('2023-03-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_FIELD (Id, Module_ID, Name, Formula, Changed)
VALUES (3,1,'Failure Rate','100 * Failures / Attempts',TO_DATE('2023-08-14 11:20:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_FIELD (Id, Module_ID, Name, Formula, Changed)
VALUES (4,2,'Dropped Calls','CFC_DROP',TO_DATE('2023-03-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_FIELD (Id, Module_ID, Name, Formula, Changed)
VALUES (5,3,'Sessions','EVDO_CONN',TO_DATE('2024-02-20 15:42:10','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_UPDATE_TIME (Id, Last_Update) VALUES (1,TO_DATE('2024-02-15 10:30:00','YYYY-MM-DD HH24:MI:SS'))
/
