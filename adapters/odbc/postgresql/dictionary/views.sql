-- Oracle's dictionary views over the server's catalogue. Names are upper case; one that was quoted keeps its letters.

CREATE OR REPLACE VIEW sabrel_dictionary.dual AS SELECT 'X'::varchar(1) AS dummy
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.shown_name (name name) RETURNS varchar
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN CASE WHEN name::text COLLATE "default" = lower(name::text COLLATE "default")
            THEN upper(name::text COLLATE "default") ELSE name::text END
/
-- Oracle's word for a type.
CREATE OR REPLACE FUNCTION sabrel_dictionary.shown_type (type oid, modifier integer) RETURNS varchar
LANGUAGE sql STABLE PARALLEL SAFE
RETURN CASE type
  WHEN 'varchar'::regtype THEN 'VARCHAR2'
  WHEN 'bpchar'::regtype THEN 'CHAR'
  WHEN 'text'::regtype THEN CASE WHEN modifier IS NULL THEN 'VARCHAR2' ELSE 'CLOB' END
  WHEN 'timestamp'::regtype THEN
    CASE WHEN modifier IS NULL OR modifier = 0 THEN 'DATE'
         ELSE 'TIMESTAMP(' || CASE WHEN modifier < 0 THEN 6 ELSE modifier END || ')' END
  WHEN 'date'::regtype THEN 'DATE'
  WHEN 'numeric'::regtype THEN 'NUMBER'
  WHEN 'smallint'::regtype THEN 'NUMBER'
  WHEN 'integer'::regtype THEN 'NUMBER'
  WHEN 'bigint'::regtype THEN 'NUMBER'
  WHEN 'double precision'::regtype THEN 'FLOAT'
  WHEN 'real'::regtype THEN 'BINARY_FLOAT'
  WHEN 'bytea'::regtype THEN 'BLOB'
  ELSE upper(format_type(type, NULL)) END
/
CREATE OR REPLACE VIEW sabrel_dictionary.user_tables AS
  SELECT sabrel_dictionary.shown_name(relname) AS table_name, 'VALID'::varchar AS status
    FROM pg_catalog.pg_class
   WHERE relnamespace = to_regnamespace(quote_ident(sabrel_dictionary.site_schema())) AND relkind IN ('r', 'p')
/
CREATE OR REPLACE VIEW sabrel_dictionary.user_tab_columns AS
  SELECT sabrel_dictionary.shown_name(c.relname) AS table_name, sabrel_dictionary.shown_name(a.attname) AS column_name,
         sabrel_dictionary.shown_type(a.atttypid, a.atttypmod) AS data_type,
         CASE WHEN a.atttypid IN ('varchar'::regtype, 'bpchar'::regtype)
              THEN CASE WHEN a.atttypmod > 4 THEN a.atttypmod - 4 ELSE 4000 END
              WHEN a.atttypid IN ('text'::regtype, 'bytea'::regtype) THEN 4000
              WHEN a.atttypid = 'timestamp'::regtype AND a.atttypmod = 0 THEN 7
              ELSE 22 END AS data_length,
         CASE WHEN a.atttypid = 'numeric'::regtype AND a.atttypmod >= 4 THEN (a.atttypmod - 4) >> 16 & 65535
         END AS data_precision,
         CASE WHEN a.atttypid = 'numeric'::regtype AND a.atttypmod >= 4
              THEN (((a.atttypmod - 4) & 2047) # 1024) - 1024
              WHEN a.atttypid IN ('smallint'::regtype, 'integer'::regtype, 'bigint'::regtype) THEN 0
         END AS data_scale,
         CASE WHEN a.attnotnull THEN 'N' ELSE 'Y' END::varchar AS nullable, a.attnum::integer AS column_id
    FROM pg_catalog.pg_class c JOIN pg_catalog.pg_attribute a ON a.attrelid = c.oid
   WHERE c.relnamespace = to_regnamespace(quote_ident(sabrel_dictionary.site_schema()))
     AND c.relkind IN ('r', 'p', 'v', 'm', 'f') AND a.attnum > 0 AND NOT a.attisdropped
/
-- Schemas that hold the routines of packages.
CREATE OR REPLACE VIEW sabrel_dictionary.package_schemas AS
  SELECT n.oid, n.nspname
    FROM pg_catalog.pg_namespace n
   WHERE n.nspname NOT IN (sabrel_dictionary.site_schema(), 'sabrel_dictionary', 'public', 'information_schema')
     AND n.nspname NOT LIKE 'pg\_%'
     AND NOT EXISTS (SELECT 1 FROM pg_catalog.pg_depend d
                      WHERE d.classid = 'pg_catalog.pg_namespace'::regclass AND d.objid = n.oid AND d.deptype = 'e')
/
CREATE OR REPLACE VIEW sabrel_dictionary.site_routines AS
  SELECT p.oid, NULL::name AS package, p.proname, p.prokind = 'f' AND p.prorettype <> 'void'::regtype AS is_function,
         p.prorettype, p.proargtypes, p.proallargtypes, p.proargmodes, p.proargnames,
         coalesce(p.proargnames[1] = 'return_value' AND p.proargmodes[1] = 'o' AND p.prokind = 'f', false) AS has_out_result
    FROM pg_catalog.pg_proc p
   WHERE p.pronamespace = to_regnamespace(quote_ident(sabrel_dictionary.site_schema())) AND p.prokind IN ('f', 'p')
     AND p.prorettype <> 'trigger'::regtype
  UNION ALL
  SELECT p.oid, n.nspname, p.proname, p.prokind = 'f' AND p.prorettype <> 'void'::regtype,
         p.prorettype, p.proargtypes, p.proallargtypes, p.proargmodes, p.proargnames,
         coalesce(p.proargnames[1] = 'return_value' AND p.proargmodes[1] = 'o' AND p.prokind = 'f', false)
    FROM sabrel_dictionary.package_schemas n JOIN pg_catalog.pg_proc p ON p.pronamespace = n.oid
   WHERE p.prokind IN ('f', 'p') AND p.prorettype <> 'trigger'::regtype
/
-- Position 0 is a function's result: its type, or its leading OUT argument return_value.
CREATE OR REPLACE VIEW sabrel_dictionary.user_arguments AS
  SELECT sabrel_dictionary.shown_name(r.package) AS package_name, sabrel_dictionary.shown_name(r.proname) AS object_name,
         sabrel_dictionary.shown_name(r.proargnames[a.number]::name) AS argument_name,
         (a.number - r.has_out_result::integer)::integer AS position,
         sabrel_dictionary.shown_type(a.type, NULL) AS data_type,
         CASE r.proargmodes[a.number] WHEN 'o' THEN 'OUT' WHEN 'b' THEN 'IN/OUT' ELSE 'IN' END::varchar AS in_out
    FROM sabrel_dictionary.site_routines r,
         unnest(coalesce(r.proallargtypes, r.proargtypes::oid[])) WITH ORDINALITY AS a (type, number)
   WHERE coalesce(r.proargmodes[a.number], 'i') <> 't'
     AND NOT (r.has_out_result AND a.number = 1)
  UNION ALL
  SELECT sabrel_dictionary.shown_name(r.package), sabrel_dictionary.shown_name(r.proname), NULL, 0,
         sabrel_dictionary.shown_type(CASE WHEN r.has_out_result THEN r.proallargtypes[1] ELSE r.prorettype END, NULL),
         'OUT'
    FROM sabrel_dictionary.site_routines r
   WHERE r.is_function
/
CREATE OR REPLACE VIEW sabrel_dictionary.user_objects AS
  SELECT sabrel_dictionary.shown_name(c.relname) AS object_name,
         CASE c.relkind WHEN 'v' THEN 'VIEW' WHEN 'm' THEN 'MATERIALIZED VIEW' WHEN 'S' THEN 'SEQUENCE'
                        WHEN 'i' THEN 'INDEX' WHEN 'I' THEN 'INDEX' ELSE 'TABLE' END::varchar AS object_type,
         'VALID'::varchar AS status
    FROM pg_catalog.pg_class c
   WHERE c.relnamespace = to_regnamespace(quote_ident(sabrel_dictionary.site_schema()))
     AND c.relkind IN ('r', 'p', 'v', 'm', 'S', 'i', 'I')
     AND NOT (c.relkind IN ('i', 'I') AND EXISTS (SELECT 1 FROM pg_catalog.pg_constraint k WHERE k.conindid = c.oid
                                                     AND k.contype IN ('p', 'u', 'x')))
  UNION ALL
  SELECT sabrel_dictionary.shown_name(t.tgname), 'TRIGGER', 'VALID'
    FROM pg_catalog.pg_trigger t JOIN pg_catalog.pg_class c ON c.oid = t.tgrelid
   WHERE c.relnamespace = to_regnamespace(quote_ident(sabrel_dictionary.site_schema())) AND NOT t.tgisinternal
  UNION ALL
  SELECT sabrel_dictionary.shown_name(r.proname), CASE WHEN r.is_function THEN 'FUNCTION' ELSE 'PROCEDURE' END, 'VALID'
    FROM sabrel_dictionary.site_routines r
   WHERE r.package IS NULL
  UNION ALL
  SELECT sabrel_dictionary.shown_name(n.nspname), 'PACKAGE', 'VALID'
    FROM sabrel_dictionary.package_schemas n
   WHERE EXISTS (SELECT 1 FROM pg_catalog.pg_proc p WHERE p.pronamespace = n.oid)
/
CREATE OR REPLACE VIEW sabrel_dictionary.user_sequences AS
  SELECT sabrel_dictionary.shown_name(c.relname) AS sequence_name, s.seqincrement AS increment_by,
         CASE WHEN has_sequence_privilege(c.oid, 'SELECT, USAGE')
              THEN coalesce(pg_sequence_last_value(c.oid) + s.seqincrement, s.seqstart) END AS last_number
    FROM pg_catalog.pg_sequence s JOIN pg_catalog.pg_class c ON c.oid = s.seqrelid
   WHERE c.relnamespace = to_regnamespace(quote_ident(sabrel_dictionary.site_schema()))
/
GRANT SELECT ON sabrel_dictionary.dual, sabrel_dictionary.user_tables, sabrel_dictionary.user_tab_columns,
  sabrel_dictionary.user_arguments, sabrel_dictionary.user_objects, sabrel_dictionary.user_sequences TO PUBLIC
/
-- Whoever made the dictionary goes on as every session of the site begins.
SELECT sabrel_dictionary.start_session()
/
