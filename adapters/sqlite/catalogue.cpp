#include "adapters/sqlite/catalogue.h"

namespace sabrel::sqlite {
namespace {

constexpr const char* kCatalogueSql = R"sql(
CREATE TABLE sabrel_sequence (
  name TEXT PRIMARY KEY, next_value INTEGER NOT NULL, increment_by INTEGER NOT NULL
) WITHOUT ROWID;

-- One row: counts what changes the meaning of statements that were compiled before.
CREATE TABLE sabrel_catalogue (version INTEGER NOT NULL);
INSERT INTO sabrel_catalogue VALUES (1);

CREATE TABLE sabrel_routine (
  routine_id INTEGER PRIMARY KEY, package TEXT NOT NULL, name TEXT NOT NULL,
  is_function INTEGER NOT NULL, result_type TEXT NOT NULL, UNIQUE (package, name)
);
CREATE TABLE sabrel_argument (
  routine_id INTEGER NOT NULL REFERENCES sabrel_routine ON DELETE CASCADE,
  position INTEGER NOT NULL, name TEXT NOT NULL, direction TEXT NOT NULL, type TEXT NOT NULL,
  PRIMARY KEY (routine_id, position)
) WITHOUT ROWID;
CREATE TABLE sabrel_body (
  routine_id INTEGER NOT NULL REFERENCES sabrel_routine ON DELETE CASCADE,
  step INTEGER NOT NULL, statement TEXT NOT NULL,
  PRIMARY KEY (routine_id, step)
) WITHOUT ROWID;

-- No table behind it: a table would be locked by whoever draws a sequence through it.
CREATE VIEW DUAL AS SELECT 'X' AS DUMMY;

CREATE VIEW sabrel_relation AS
  SELECT name, UPPER(name) AS table_name, UPPER(type) AS object_type FROM sqlite_schema
  WHERE type IN ('table', 'view') AND substr(name, 1, 7) <> 'sabrel_'
    AND substr(name, 1, 7) <> 'sqlite_'
    AND name NOT IN ('DUAL', 'user_tables', 'user_tab_columns', 'user_arguments', 'user_objects',
                     'user_sequences');

CREATE VIEW user_tables AS
  SELECT table_name AS TABLE_NAME, 'VALID' AS STATUS FROM sabrel_relation
  WHERE object_type = 'TABLE';

CREATE VIEW user_tab_columns AS
  SELECT TABLE_NAME, COLUMN_NAME, DATA_TYPE,
    CASE WHEN DATA_TYPE = 'DATE' THEN 7
         WHEN DATA_TYPE LIKE '%CHAR%' THEN COALESCE(first_size, 4000)
         WHEN DATA_TYPE LIKE '%LOB%' THEN 4000 ELSE 22 END AS DATA_LENGTH,
    CASE WHEN DATA_TYPE IN ('NUMBER', 'DECIMAL', 'NUMERIC', 'FLOAT') THEN first_size END
      AS DATA_PRECISION,
    CASE WHEN DATA_TYPE IN ('NUMBER', 'DECIMAL', 'NUMERIC') THEN
           CASE WHEN comma > 0 THEN CAST(substr(sizes, comma + 1) AS INTEGER)
                WHEN first_size IS NOT NULL THEN 0 END
         WHEN DATA_TYPE IN ('INTEGER', 'INT', 'SMALLINT') THEN 0 END AS DATA_SCALE,
    NULLABLE, COLUMN_ID
  FROM (
    SELECT TABLE_NAME, COLUMN_NAME, NULLABLE, COLUMN_ID, sizes, instr(sizes, ',') AS comma,
      CASE WHEN opening > 0 THEN trim(substr(type, 1, opening - 1))
           WHEN type = 'LONG TEXT' THEN 'LONG' ELSE type END AS DATA_TYPE,
      CASE WHEN opening > 0 THEN CAST(sizes AS INTEGER) END AS first_size
    FROM (
      SELECT r.table_name AS TABLE_NAME, UPPER(c.name) AS COLUMN_NAME, UPPER(c.type) AS type,
        CASE WHEN c."notnull" OR c.pk > 0 THEN 'N' ELSE 'Y' END AS NULLABLE,
        c.cid + 1 AS COLUMN_ID, instr(c.type, '(') AS opening,
        CASE WHEN instr(c.type, '(') > 0 THEN substr(c.type, instr(c.type, '(') + 1) END AS sizes
      FROM sabrel_relation r JOIN pragma_table_xinfo(r.name) c
    ));

CREATE VIEW user_arguments AS
  SELECT NULLIF(r.package, '') AS PACKAGE_NAME, r.name AS OBJECT_NAME,
    UPPER(a.name) AS ARGUMENT_NAME, a.position AS POSITION, a.type AS DATA_TYPE,
    a.direction AS IN_OUT
  FROM sabrel_routine r JOIN sabrel_argument a ON a.routine_id = r.routine_id
  UNION ALL
  SELECT NULLIF(package, ''), name, NULL, 0, result_type, 'OUT' FROM sabrel_routine
  WHERE is_function;

CREATE VIEW user_objects AS
  SELECT table_name AS OBJECT_NAME, object_type AS OBJECT_TYPE, 'VALID' AS STATUS
  FROM sabrel_relation
  UNION ALL
  SELECT UPPER(name), 'INDEX', 'VALID' FROM sqlite_schema
  WHERE type = 'index' AND substr(name, 1, 7) NOT IN ('sqlite_', 'sabrel_')
  UNION ALL
  SELECT UPPER(name), 'TRIGGER', 'VALID' FROM sqlite_schema
  WHERE type = 'trigger' AND substr(name, 1, 7) <> 'sabrel_'
  UNION ALL SELECT name, 'SEQUENCE', 'VALID' FROM sabrel_sequence
  UNION ALL
  SELECT name, CASE WHEN is_function THEN 'FUNCTION' ELSE 'PROCEDURE' END, 'VALID'
  FROM sabrel_routine WHERE package = ''
  UNION ALL SELECT DISTINCT package, 'PACKAGE', 'VALID' FROM sabrel_routine WHERE package <> '';

CREATE VIEW user_sequences AS
  SELECT name AS SEQUENCE_NAME, increment_by AS INCREMENT_BY, next_value AS LAST_NUMBER
  FROM sabrel_sequence;
)sql";

}  // namespace

const char* CatalogueSql() noexcept { return kCatalogueSql; }

}  // namespace sabrel::sqlite
