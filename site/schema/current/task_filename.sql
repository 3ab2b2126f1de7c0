-- Output files of finished tasks. LIMIT says that the output met the row limit (or how many rows were allowed);
-- SIZEINROWS, since release 7, how many rows the file has.

CREATE TABLE TASK_FILENAME (
  TASKID        NUMBER(10)    PRIMARY KEY REFERENCES TASK (ID),
  FILENAME      VARCHAR2(255) NOT NULL,
  LIMIT         NUMBER(10),
  SIZEINROWS    NUMBER(10)
)
/
