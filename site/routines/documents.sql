-- Documents on server groups: may they run, and do they wait for an export? Packages EA_Client and EA_EXP.

-- Why documents of a server group cannot run, null when they can. fServers = 1 asks for servers that are switched off,
-- fMembers = 1 for a group without servers; nMode is kept for older clients, which send 0.
CREATE OR REPLACE FUNCTION EA_Client.IsServerGroupDocumentValid
  (ordID IN NUMBER, nMode IN NUMBER, fServers IN NUMBER, fMembers IN NUMBER)
RETURN VARCHAR2 AS
BEGIN
  SELECT 'Server group ' || NVL(TO_CHAR(:ordID), '(none)') || ' does not exist.' AS reason FROM DUAL
   WHERE NOT EXISTS (SELECT 1 FROM EA_SERVER_GROUP WHERE Id = :ordID);
  SELECT 'Server group ' || Name || ' has no servers.' AS reason FROM EA_SERVER_GROUP g
   WHERE g.Id = :ordID AND :fMembers = 1
     AND NOT EXISTS (SELECT 1 FROM EA_SERVER_GROUP_MEMBER m WHERE m.Server_Group_Id = g.Id);
  SELECT 'Server ' || s.Name || ' of server group ' || g.Name || ' is not active.' AS reason
    FROM EA_SERVER_GROUP g, EA_SERVER_GROUP_MEMBER m, EA_SERVER s
   WHERE g.Id = :ordID AND m.Server_Group_Id = g.Id AND s.Id = m.Server_Id AND s.Active = 'N' AND :fServers = 1
   ORDER BY s.Name;
  SELECT :reason AS return_value FROM DUAL;
END;
/
-- How many reports of a group changed since their last export to a server (server 0: to any of theirs). What was found
-- stays in EA_EXP_REQUIRED under the user and the client's time until it is cleared.
CREATE OR REPLACE FUNCTION EA_EXP.Export_Required
  (ordGrpID IN NUMBER, ordServerID IN NUMBER, OrdUserID IN NUMBER, dtTimeStamp IN VARCHAR2)
RETURN NUMBER AS
BEGIN
  INSERT INTO EA_EXP_REQUIRED (User_Id, Time_Stamp, Group_Id, Document_Id, Server_Id)
  SELECT :OrdUserID, :dtTimeStamp, i.GROUP_ID, r.Id, m.Server_Id
    FROM JOB_GROUP_ITEM i, PM_REPORT r, EA_SERVER_GROUP_MEMBER m
   WHERE i.GROUP_ID = :ordGrpID AND r.Id = i.DOCUMENT_ID AND m.Server_Group_Id = r.ServerGroupID
     AND (:ordServerID = 0 OR m.Server_Id = :ordServerID)
     AND NOT EXISTS (SELECT 1 FROM EA_EXPORT x
                      WHERE x.Document_Id = r.Id AND x.Server_Id = m.Server_Id AND x.Exported >= r.Changed)
     AND NOT EXISTS (SELECT 1 FROM EA_EXP_REQUIRED q
                      WHERE q.User_Id = :OrdUserID AND q.Time_Stamp = :dtTimeStamp AND q.Group_Id = i.GROUP_ID
                        AND q.Document_Id = r.Id AND q.Server_Id = m.Server_Id);
  SELECT COUNT(*) AS return_value FROM EA_EXP_REQUIRED
   WHERE User_Id = :OrdUserID AND Time_Stamp = :dtTimeStamp AND Group_Id = :ordGrpID
     AND (:ordServerID = 0 OR Server_Id = :ordServerID);
END;
/
CREATE OR REPLACE PROCEDURE EA_EXP.Clear_EXP_Required (ordUser IN NUMBER, dtTime IN VARCHAR2) AS
BEGIN
  DELETE FROM EA_EXP_REQUIRED WHERE User_Id = :ordUser AND Time_Stamp = :dtTime;
END;
/
