-- Texts longer than one column: numbered pieces that follow each other in the order of Ordinal.
-- An empty text is one row without StringData.

CREATE TABLE PM_StringTable (
  Id           NUMBER(10)     NOT NULL,
  Ordinal      NUMBER(10)     NOT NULL,
  StringData   VARCHAR2(4000),
  PRIMARY KEY (Id, Ordinal),
  CHECK (Ordinal >= 1)
)
/
CREATE SEQUENCE PM_StringTable_SQ START WITH 1000
/
