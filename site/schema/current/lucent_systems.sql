-- Network systems with their release. Its presence says that releases of the network are told apart here.

CREATE TABLE luc_ent_system (
  System_Id     NUMBER(10)    PRIMARY KEY,
  System_Name   VARCHAR2(64)  NOT NULL UNIQUE,
  Release_No    NUMBER(4)     NOT NULL
)
/
