-- Users. From another server, Ana may work; Ben is no remote user (20011); Carla may log in but not change shared
-- definitions (20012); Dario is locked.

INSERT INTO EA_USER (Id, Name, Is_Remote, Is_Data_Admin, Is_Locked, Created)
VALUES (1,'ana','Y','Y','N',TO_DATE('2022-05-02 08:00:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_USER (Id, Name, Is_Remote, Is_Data_Admin, Is_Locked, Created)
VALUES (2,'ben','N','Y','N',TO_DATE('2022-05-02 08:05:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_USER (Id, Name, Is_Remote, Is_Data_Admin, Is_Locked, Created)
VALUES (3,'carla','Y','N','N',TO_DATE('2022-09-19 13:30:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_USER (Id, Name, Is_Remote, Is_Data_Admin, Is_Locked, Created)
VALUES (4,'dario','Y','Y','Y',TO_DATE('2023-01-11 10:15:00','YYYY-MM-DD HH24:MI:SS'))
/
INSERT INTO EA_USER (Id, Name, Is_Remote, Is_Data_Admin, Is_Locked, Created)
VALUES (5,'o''neil','Y','Y','N',TO_DATE('2023-06-30 16:45:00','YYYY-MM-DD HH24:MI:SS'))
/
