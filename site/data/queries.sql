-- Stored texts, queries over them, filters, and the data collected from 5 to 9 March 2024. Text 4 is empty, text 5 is
-- kept line by line.

INSERT INTO PM_StringTable (Id, Ordinal, StringData)
VALUES (1,1,'SELECT CELL, ATTEMPTS, FAILURES FROM TRAFFIC_HOURLY WHERE HOUR BETWEEN 6 AND 21')
/
INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (2,1,'SELECT CELL, SUM(DROPPED) FROM PCMD_CALLS ')
/
INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (2,2,'WHERE MARKET = ''HARBOUR'' AND CFC <> 0')
/
INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (3,1,'SELECT SITE FROM SITES WHERE 1 = 1')
/
INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (4,1,NULL)
/
INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (5,1,'Morning Traffic')
/
INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (5,2,'attempts and failures by cell')
/
INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (5,3,'from 06:00 to 21:59')
/
INSERT INTO ZR_FILTER (Id, Name, Condition) VALUES (1,'North cells','CELL LIKE ''CELL1%''')
/
INSERT INTO ZR_FILTER (Id, Name, Condition) VALUES (2,'High traffic','ATTEMPTS > 1000')
/
INSERT INTO ZR_FILTER (Id, Name, Condition) VALUES (3,'Micro cells','TYPE = ''Micro Cell''')
/
INSERT INTO ZR_QUERY_DEF (Id, Name, String_Id, Base_Id, Filter_Id) VALUES (1,'Hourly traffic',1,NULL,NULL)
/
INSERT INTO ZR_QUERY_DEF (Id, Name, String_Id, Base_Id, Filter_Id) VALUES (2,'Dropped calls by cell',2,NULL,NULL)
/
INSERT INTO ZR_QUERY_DEF (Id, Name, String_Id, Base_Id, Filter_Id) VALUES (3,'Sites',3,NULL,NULL)
/
INSERT INTO ZR_AVAILABLE_DATA (TimeStamp, Module_ID, Row_Count)
SELECT TO_DATE('2024-03-0' || d.N || ' ' || t.N || u.N || ':00:00','YYYY-MM-DD HH24:MI:SS'), m.Module_ID,
       4200 + MOD(97 * (10 * t.N + u.N) + 811 * m.Module_ID + 53 * d.N, 900)
  FROM PM_PIVOT d, PM_PIVOT t, PM_PIVOT u, EA_module m
 WHERE d.N BETWEEN 5 AND 9 AND 10 * t.N + u.N <= 23 AND m.Module_ID <= 3
/
