-- Stored queries, the filters of scenarios, and the span of data that has been collected.
-- A query with a base is the copy of that query for one filter; its text is a text of its own.

CREATE TABLE ZR_FILTER (
  Id            NUMBER(10)     PRIMARY KEY,
  Name          VARCHAR2(64)   NOT NULL UNIQUE,
  Condition     VARCHAR2(1000) NOT NULL
)
/
CREATE TABLE ZR_QUERY_DEF (
  Id            NUMBER(10)     PRIMARY KEY,
  Name          VARCHAR2(128)  NOT NULL,
  String_Id     NUMBER(10)     NOT NULL UNIQUE,
  Base_Id       NUMBER(10),
  Filter_Id     NUMBER(10),
  CONSTRAINT ZR_QUERY_DEF_BASE_FK FOREIGN KEY (Base_Id) REFERENCES ZR_QUERY_DEF (Id),
  CONSTRAINT ZR_QUERY_DEF_FILTER_FK FOREIGN KEY (Filter_Id) REFERENCES ZR_FILTER (Id),
  CONSTRAINT ZR_QUERY_DEF_COPY_UK UNIQUE (Base_Id, Filter_Id)
)
/
CREATE SEQUENCE ZR_QUERY_SQ START WITH 100
/
CREATE TABLE ZR_AVAILABLE_DATA (
  TimeStamp     DATE           NOT NULL,
  Module_ID     NUMBER(10)     NOT NULL REFERENCES EA_module (Module_ID),
  Row_Count     NUMBER(10)     NOT NULL,
  PRIMARY KEY (TimeStamp, Module_ID)
)
/
