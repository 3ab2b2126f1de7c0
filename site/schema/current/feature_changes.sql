-- The switch table of features. Where it exists its rows alone decide which features are on.

CREATE TABLE PM_Feature_Changes (
  Feature       VARCHAR2(64)  PRIMARY KEY,
  Enabled       CHAR(1)       NOT NULL CHECK (Enabled IN ('Y', 'N'))
)
/
