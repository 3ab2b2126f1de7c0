-- Documents on server groups: may they run, and do they wait for an export? Packages EA_Client and EA_EXP.

CREATE SCHEMA IF NOT EXISTS EA_EXP
/
-- Why documents of a server group cannot run, null when they can. fServers = 1 asks for servers that are switched off,
-- fMembers = 1 for a group without servers; nMode is kept for older clients, which send 0.
CREATE OR REPLACE FUNCTION EA_Client.IsServerGroupDocumentValid
  (ordID numeric, nMode numeric, fServers numeric, fMembers numeric) RETURNS varchar LANGUAGE plpgsql STABLE AS $$
DECLARE
  group_name varchar;
  server_name varchar;
BEGIN
  SELECT g.Name INTO group_name FROM EA_SERVER_GROUP g WHERE g.Id = ordID;
  IF NOT FOUND THEN
    RETURN 'Server group ' || coalesce(to_char(ordID), '(none)') || ' does not exist.';
  END IF;
  SELECT s.Name INTO server_name FROM EA_SERVER_GROUP_MEMBER m JOIN EA_SERVER s ON s.Id = m.Server_Id
   WHERE m.Server_Group_Id = ordID AND s.Active = 'N' AND fServers = 1 ORDER BY s.Name LIMIT 1;
  IF FOUND THEN
    RETURN 'Server ' || server_name || ' of server group ' || group_name || ' is not active.';
  ELSIF fMembers = 1 AND NOT EXISTS (SELECT 1 FROM EA_SERVER_GROUP_MEMBER m WHERE m.Server_Group_Id = ordID) THEN
    RETURN 'Server group ' || group_name || ' has no servers.';
  END IF;
  RETURN NULL;
END
$$
/
-- How many reports of a group changed since their last export to a server (server 0: to any of theirs). What was found
-- stays in EA_EXP_REQUIRED under the user and the client's time until it is cleared.
CREATE OR REPLACE FUNCTION EA_EXP.Export_Required
  (ordGrpID numeric, ordServerID numeric, OrdUserID numeric, dtTimeStamp varchar) RETURNS numeric LANGUAGE plpgsql AS $$
BEGIN
  INSERT INTO EA_EXP_REQUIRED (User_Id, Time_Stamp, Group_Id, Document_Id, Server_Id)
  SELECT OrdUserID, dtTimeStamp, i.GROUP_ID, r.Id, m.Server_Id
    FROM JOB_GROUP_ITEM i JOIN PM_REPORT r ON r.Id = i.DOCUMENT_ID
    JOIN EA_SERVER_GROUP_MEMBER m ON m.Server_Group_Id = r.ServerGroupID
   WHERE i.GROUP_ID = ordGrpID AND (ordServerID = 0 OR m.Server_Id = ordServerID)
     AND NOT EXISTS (SELECT 1 FROM EA_EXPORT x
                      WHERE x.Document_Id = r.Id AND x.Server_Id = m.Server_Id AND x.Exported >= r.Changed)
      ON CONFLICT DO NOTHING;
  RETURN (SELECT count(*) FROM EA_EXP_REQUIRED q
           WHERE q.User_Id = OrdUserID AND q.Time_Stamp = dtTimeStamp AND q.Group_Id = ordGrpID
             AND (ordServerID = 0 OR q.Server_Id = ordServerID));
END
$$
/
CREATE OR REPLACE PROCEDURE EA_EXP.Clear_EXP_Required (ordUser numeric, dtTime varchar) LANGUAGE sql AS $$
  DELETE FROM EA_EXP_REQUIRED WHERE User_Id = ordUser AND Time_Stamp = dtTime
$$
/
