-- Package LengthyReport: warns of reports that load the server. Optional since release 7.

-- Why a report is lengthy, its reasons joined by "|"; null when it is not. nDayCount replaces the report's own
-- number of days, null keeps it.
CREATE OR REPLACE FUNCTION LengthyReport.Reason (nReportID IN NUMBER, nDayCount IN NUMBER) RETURN VARCHAR2 AS
BEGIN
  SELECT NVL(:nDayCount, Day_Count) AS day_count, Entity_Count AS entity_count, Busy_Hour AS busy_hour
    FROM PM_REPORT WHERE Id = :nReportID;
  SELECT 'The report covers ' || :day_count || ' days.' AS reason FROM DUAL WHERE :day_count > 31;
  SELECT CASE WHEN :reason IS NULL THEN 'The report covers ' || :entity_count || ' entities.'
              ELSE :reason || '|The report covers ' || :entity_count || ' entities.' END AS reason
    FROM DUAL WHERE :entity_count > 500;
  SELECT :reason || '|The report looks for busy hours.' AS reason
    FROM DUAL WHERE :busy_hour = 'Y' AND :reason IS NOT NULL;
  SELECT :reason AS return_value FROM DUAL;
END;
/
-- The names of the lengthy reports of a job, joined by "|": the first four, then how many more there are.
CREATE OR REPLACE FUNCTION LengthyReport.LengthyReports (nJobID IN NUMBER) RETURN VARCHAR2 AS
BEGIN
  SELECT COUNT(*) AS total, MIN(r.Name) AS name FROM JOB j, JOB_GROUP_ITEM i, PM_REPORT r
   WHERE j.ID = :nJobID AND i.GROUP_ID = j.GROUP_ID AND r.Id = i.DOCUMENT_ID
     AND LENGTH(LengthyReport.Reason(r.Id, NULL)) > 0;
  SELECT :name AS names FROM DUAL;
  SELECT MIN(r.Name) AS name FROM JOB j, JOB_GROUP_ITEM i, PM_REPORT r
   WHERE j.ID = :nJobID AND i.GROUP_ID = j.GROUP_ID AND r.Id = i.DOCUMENT_ID
     AND LENGTH(LengthyReport.Reason(r.Id, NULL)) > 0 AND r.Name > :name;
  SELECT :names || '|' || :name AS names FROM DUAL WHERE :name IS NOT NULL;
  SELECT MIN(r.Name) AS name FROM JOB j, JOB_GROUP_ITEM i, PM_REPORT r
   WHERE j.ID = :nJobID AND i.GROUP_ID = j.GROUP_ID AND r.Id = i.DOCUMENT_ID
     AND LENGTH(LengthyReport.Reason(r.Id, NULL)) > 0 AND r.Name > :name;
  SELECT :names || '|' || :name AS names FROM DUAL WHERE :name IS NOT NULL;
  SELECT MIN(r.Name) AS name FROM JOB j, JOB_GROUP_ITEM i, PM_REPORT r
   WHERE j.ID = :nJobID AND i.GROUP_ID = j.GROUP_ID AND r.Id = i.DOCUMENT_ID
     AND LENGTH(LengthyReport.Reason(r.Id, NULL)) > 0 AND r.Name > :name;
  SELECT :names || '|' || :name AS names FROM DUAL WHERE :name IS NOT NULL;
  SELECT :names || '|and ' || (:total - 4) || ' more' AS names FROM DUAL WHERE :total > 4;
  SELECT :names AS return_value FROM DUAL;
END;
/
