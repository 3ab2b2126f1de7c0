-- Widths of columns, for the client's input fields. Names in any case; null for a column that does not exist.

CREATE OR REPLACE FUNCTION FS_GetColumnLength (sTable IN VARCHAR2, sColumn IN VARCHAR2) RETURN NUMBER AS
BEGIN
  SELECT data_length AS return_value FROM user_tab_columns
   WHERE table_name = UPPER(:sTable) AND column_name = UPPER(:sColumn);
END;
/
