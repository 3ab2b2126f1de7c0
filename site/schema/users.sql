-- Users of the enterprise server. Passwords are the Data Server's business and are not kept here.
-- Is_Remote: may log in from another server. Is_Data_Admin: may change shared definitions.

CREATE TABLE EA_USER (
  Id             NUMBER(10)    PRIMARY KEY,
  Name           VARCHAR2(64)  NOT NULL UNIQUE,
  Is_Remote      CHAR(1)       NOT NULL CHECK (Is_Remote IN ('Y', 'N')),
  Is_Data_Admin  CHAR(1)       NOT NULL CHECK (Is_Data_Admin IN ('Y', 'N')),
  Is_Locked      CHAR(1)       NOT NULL CHECK (Is_Locked IN ('Y', 'N')),
  Created        DATE          NOT NULL
)
/
CREATE SEQUENCE EA_USER_SQ START WITH 100
/
