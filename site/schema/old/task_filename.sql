-- Output files of finished tasks, as before release 7: LIMIT says that the output met the row limit, and nothing
-- keeps the number of rows.

CREATE TABLE TASK_FILENAME (
  TASKID        NUMBER(10)    PRIMARY KEY REFERENCES TASK (ID),
  FILENAME      VARCHAR2(255) NOT NULL,
  LIMIT         NUMBER(10)
)
/
