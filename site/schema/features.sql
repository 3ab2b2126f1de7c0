-- What is installed and switched on: groups with their categories, tools, tabs of the applications, kinds of jobs.

CREATE TABLE PM_Groups (
  Group_Id      NUMBER(10)    PRIMARY KEY,
  Group_Name    VARCHAR2(40)  NOT NULL UNIQUE,
  Group_Active  CHAR(1)       NOT NULL CHECK (Group_Active IN ('Y', 'N'))
)
/
CREATE TABLE PM_CATEGORIES (
  Category_ID      NUMBER(10)    PRIMARY KEY,
  Category_Name    VARCHAR2(64)  NOT NULL UNIQUE,
  CategoryFunction VARCHAR2(64)  NOT NULL,
  Category_Active  CHAR(1)       NOT NULL CHECK (Category_Active IN ('Y', 'N'))
)
/
CREATE TABLE PM_GROUP_CATEGORIES (
  Group_ID      NUMBER(10)    NOT NULL REFERENCES PM_Groups (Group_Id),
  Category_ID   NUMBER(10)    NOT NULL REFERENCES PM_CATEGORIES (Category_ID),
  PRIMARY KEY (Group_ID, Category_ID)
)
/
-- Tool_Name is the name under which the client registers the tool.
CREATE TABLE PM_Tools (
  Tool_ID       NUMBER(10)    PRIMARY KEY,
  Tool_Name     VARCHAR2(128) NOT NULL UNIQUE,
  Tool_Label    VARCHAR2(64)  NOT NULL
)
/
CREATE TABLE PM_APP_NAMES (
  App_ID        NUMBER(10)    PRIMARY KEY,
  App_Name      VARCHAR2(64)  NOT NULL UNIQUE,
  Active        CHAR(1)       NOT NULL CHECK (Active IN ('Y', 'N'))
)
/
CREATE TABLE PM_TABS (
  Tab_ID        NUMBER(10)    PRIMARY KEY,
  Control_Name  VARCHAR2(128) NOT NULL UNIQUE
)
/
CREATE TABLE PM_APP_TABS (
  App_ID        NUMBER(10)    NOT NULL REFERENCES PM_APP_NAMES (App_ID),
  Tab_ID        NUMBER(10)    NOT NULL REFERENCES PM_TABS (Tab_ID),
  TabName       VARCHAR2(40)  NOT NULL,
  TabLabel      VARCHAR2(64),
  Active        CHAR(1)       NOT NULL CHECK (Active IN ('Y', 'N')),
  PRIMARY KEY (App_ID, Tab_ID)
)
/
CREATE TABLE Job_Type (
  ID            NUMBER(10)    PRIMARY KEY,
  Description   VARCHAR2(64)  NOT NULL UNIQUE
)
/
