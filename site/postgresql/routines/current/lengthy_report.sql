-- Package LengthyReport: warns of reports that load the server. Optional since release 7.

CREATE SCHEMA IF NOT EXISTS LengthyReport
/
-- Why a report is lengthy, its reasons joined by "|"; null when it is not. nDayCount replaces the report's own
-- number of days, null keeps it. Busy hours alone are no reason.
CREATE OR REPLACE FUNCTION LengthyReport.Reason (nReportID numeric, nDayCount numeric) RETURNS varchar
LANGUAGE sql STABLE AS $$
  SELECT CASE WHEN days > 31 OR r.Entity_Count > 500 THEN
           concat_ws('|', CASE WHEN days > 31 THEN concat('The report covers ', days, ' days.') END,
                     CASE WHEN r.Entity_Count > 500 THEN concat('The report covers ', r.Entity_Count, ' entities.') END,
                     CASE WHEN r.Busy_Hour = 'Y' THEN 'The report looks for busy hours.' END) END
    FROM PM_REPORT r, coalesce(nDayCount, r.Day_Count) days
   WHERE r.Id = nReportID
$$
/
-- The names of the lengthy reports of a job, joined by "|": the first four, then how many more there are.
CREATE OR REPLACE FUNCTION LengthyReport.LengthyReports (nJobID numeric) RETURNS varchar LANGUAGE sql STABLE AS $$
  SELECT string_agg(name, '|' ORDER BY place) FILTER (WHERE place <= 4)
         || CASE WHEN count(*) > 4 THEN '|and ' || (count(*) - 4) || ' more' ELSE '' END
    FROM (SELECT r.Name AS name, row_number() OVER (ORDER BY r.Name) AS place
            FROM JOB j JOIN JOB_GROUP_ITEM i ON i.GROUP_ID = j.GROUP_ID JOIN PM_REPORT r ON r.Id = i.DOCUMENT_ID
           WHERE j.ID = nJobID AND LengthyReport.Reason(r.Id, NULL) IS NOT NULL) lengthy
$$
/
