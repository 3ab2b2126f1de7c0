-- Client machines and the product that is installed.
-- A machine enters itself at its first start. (Domain, MachineName) has no unique key: two clients that start at once
-- on a new machine may both enter it, and each then works with the row that it finds first.

CREATE TABLE PM_ClientMachine (
  Id           NUMBER(10)    PRIMARY KEY,
  Domain       VARCHAR2(64),
  MachineName  VARCHAR2(64)
)
/
CREATE SEQUENCE SQ_ClientMachine START WITH 100
/
CREATE TABLE PM_PRODUCT_INFO (
  Property     VARCHAR2(40)  PRIMARY KEY,
  Value        VARCHAR2(255)
)
/
-- The digits 0 to 9; joined with itself it numbers rows in load scripts.
CREATE TABLE PM_PIVOT (
  N            NUMBER(1)     PRIMARY KEY
)
/
