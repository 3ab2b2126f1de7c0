-- Widths of columns, for the client's input fields. Names in any case; null for a column that does not exist.

CREATE OR REPLACE FUNCTION FS_GetColumnLength (sTable varchar, sColumn varchar) RETURNS numeric LANGUAGE sql STABLE AS $$
  SELECT data_length::numeric FROM user_tab_columns
   WHERE table_name = upper(sTable) AND column_name = upper(sColumn)
$$
/
