-- Reports and groups. Of the lengthy reports, Yearly Growth has three reasons, the others one; group 3 holds five.
-- Groups: 1 needs channel-set plans, 2 data scopes, 3 both, 4 neither; 3 also holds a report whose server group has a
-- server that is switched off. Of group 1, one export is due for each of two servers and one more for the first.

INSERT INTO PM_CHANSETPLAN (Id, Name) VALUES (1,'Default Plan')
/
INSERT INTO PM_CHANSETPLAN (Id, Name) VALUES (2,'Three Carriers')
/
INSERT INTO PM_DTSCOPE (Id, Name) VALUES (1,'Working Days')
/
INSERT INTO PM_DTSCOPE (Id, Name) VALUES (2,'Weekends')
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (1,'Morning Traffic',1,1,NULL,1,1,96,'N',TO_DATE('2024-02-10 08:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (2,'Channel Use',1,2,NULL,2,7,96,'Y',TO_DATE('2024-02-28 17:05:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (3,'Weekend Traffic',3,NULL,2,NULL,2,192,'N',TO_DATE('2024-01-15 12:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (4,'Quarterly Failures',3,NULL,1,NULL,92,96,'N',TO_DATE('2024-01-02 07:30:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (5,'Yearly Growth',1,2,1,3,366,1200,'Y',TO_DATE('2024-03-01 09:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (6,'Dropped Calls',2,NULL,NULL,NULL,7,40,'N',TO_DATE('2023-12-12 12:12:12','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (7,'Cell Inventory',2,NULL,NULL,1,1,288,'N',TO_DATE('2023-12-12 12:30:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (8,'Busy Hours North',1,NULL,NULL,NULL,31,500,'Y',TO_DATE('2024-02-02 02:02:02','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (9,'Half-Year Trends',3,NULL,NULL,NULL,182,48,'N',TO_DATE('2024-02-05 14:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (10,'Market Overview',3,NULL,NULL,NULL,14,5400,'N',TO_DATE('2024-02-05 14:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_REPORT (Id, Name, Owner_Id, CHANSETPLANID, DTSCOPEID, ServerGroupID,
                       Day_Count, Entity_Count, Busy_Hour, Changed)
VALUES (11,'Site Ranking',3,NULL,NULL,NULL,60,288,'N',TO_DATE('2024-02-05 14:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO JOB_GROUP (ID, NAME) VALUES (1,'Daily')
/
INSERT INTO JOB_GROUP (ID, NAME) VALUES (2,'Weekend')
/
INSERT INTO JOB_GROUP (ID, NAME) VALUES (3,'Management')
/
INSERT INTO JOB_GROUP (ID, NAME) VALUES (4,'Operations')
/
INSERT INTO JOB_GROUP (ID, NAME) VALUES (5,'Empty')
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (1,1)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (1,2)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (1,6)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (2,3)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (2,4)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (3,2)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (3,4)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (3,5)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (3,9)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (3,10)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (3,11)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (4,6)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (4,7)
/
INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (4,8)
/
INSERT INTO PM_Note (Id, Report_Id, Author, Note_Text, Created)
VALUES (1,1,'ana','Numbers of 6 March are low: Northgate was down from 02:00 to 04:00.',
        TO_DATE('2024-03-07 08:12:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_Note (Id, Report_Id, Author, Note_Text, Created)
VALUES (2,4,'carla','Don''t print; send the spreadsheet.',TO_DATE('2024-01-02 07:45:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_Note (Id, Report_Id, Author, Note_Text, Created)
VALUES (3,5,'ana','Größe der Datei beachten.',TO_DATE('2024-03-01 09:05:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO PM_EMAIL (Id, Report_Id, Recipient, Subject) VALUES (1,1,'noc@norvasta.example','Morning traffic')
/
INSERT INTO PM_EMAIL (Id, Report_Id, Recipient, Subject) VALUES (2,5,'board@norvasta.example','Yearly growth')
/
INSERT INTO EA_EXPORT (Document_Id, Server_Id, Exported)
VALUES (1,1,TO_DATE('2024-02-01 06:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_EXPORT (Document_Id, Server_Id, Exported)
VALUES (2,1,TO_DATE('2024-02-20 06:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_EXPORT (Document_Id, Server_Id, Exported)
VALUES (7,1,TO_DATE('2024-01-05 06:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_EXPORT (Document_Id, Server_Id, Exported)
VALUES (7,2,TO_DATE('2024-01-05 06:10:00','YYYY-MM-DD HH24:MI:SS'))
/
