-- The extension that the dialect leans on, the dictionary's schema, the site's schema and what a session begins with.

CREATE EXTENSION IF NOT EXISTS orafce
/
CREATE SCHEMA IF NOT EXISTS sabrel_dictionary
/
GRANT USAGE ON SCHEMA sabrel_dictionary TO PUBLIC
/
-- The site's schema has the name of the user who makes the site; whoever makes the dictionary anew leaves it.
DO $$
BEGIN
  IF to_regprocedure('sabrel_dictionary.site_schema()') IS NULL THEN
    CREATE SCHEMA IF NOT EXISTS AUTHORIZATION CURRENT_USER;
    EXECUTE format('CREATE FUNCTION sabrel_dictionary.site_schema() RETURNS text LANGUAGE sql'
                   ' IMMUTABLE PARALLEL SAFE RETURN %L', current_user);
  END IF;
END
$$
/
-- Called once by every session before its first statement. The time zone is the server's, whatever the client asked for.
CREATE OR REPLACE FUNCTION sabrel_dictionary.start_session() RETURNS void LANGUAGE plpgsql AS $$
DECLARE
  zone text;
BEGIN
  SELECT CASE WHEN source = 'client' THEN current_setting('log_timezone') ELSE reset_val END
    INTO zone FROM pg_catalog.pg_settings WHERE name = 'TimeZone';
  PERFORM set_config('TimeZone', zone, false), set_config('orafce.timezone', zone, false),
          set_config('standard_conforming_strings', 'on', false),
          set_config('DateStyle', 'ISO, YMD', false), set_config('extra_float_digits', '1', false),
          set_config('bytea_output', 'hex', false), set_config('client_min_messages', 'warning', false),
          set_config('search_path', quote_ident(sabrel_dictionary.site_schema())
                     || ', sabrel_dictionary, oracle, public, pg_catalog', false);
END
$$
/
-- The server's time in whole seconds, the same throughout one statement of the client.
CREATE OR REPLACE FUNCTION sabrel_dictionary.sysdate() RETURNS timestamp LANGUAGE sql STABLE PARALLEL SAFE
RETURN date_trunc('second', statement_timestamp()::timestamp)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.raise_application_error
  (number numeric, message text, keep boolean DEFAULT false) RETURNS void LANGUAGE plpgsql AS $$
BEGIN
  IF number IS NULL OR number NOT BETWEEN -20999 AND -20000 THEN
    RAISE EXCEPTION 'error number argument to raise_application_error is out of range' USING ERRCODE = 'N6502';
  END IF;
  RAISE EXCEPTION USING ERRCODE = trunc(-number)::text, MESSAGE = coalesce(message, '');
END
$$
/
-- Calls `routine` with `arguments`, a text of `given` expressions of this server: only the catalogue knows whether it is
-- a function or a procedure.
CREATE OR REPLACE FUNCTION sabrel_dictionary.run (routine text, arguments text, given integer)
RETURNS void LANGUAGE plpgsql AS $$
DECLARE
  parts CONSTANT text[] := parse_ident(routine);
  size CONSTANT integer := array_length(parts, 1);
  kind "char";
  fits boolean;
BEGIN
  SELECT p.prokind, given BETWEEN p.pronargs - p.pronargdefaults AND CASE WHEN p.prokind = 'p' THEN
             coalesce(array_length(p.proallargtypes, 1), p.pronargs) ELSE p.pronargs END
    INTO kind, fits
    FROM pg_catalog.pg_proc p JOIN pg_catalog.pg_namespace n ON n.oid = p.pronamespace
   WHERE p.proname = parts[size] AND p.prokind IN ('f', 'p')
     AND CASE WHEN size > 1 THEN n.nspname = parts[size - 1] ELSE pg_catalog.pg_function_is_visible(p.oid) END
   ORDER BY 2 DESC LIMIT 1;
  IF kind IS NULL THEN
    RAISE EXCEPTION 'PLS-00201: identifier ''%'' must be declared', upper(routine) USING ERRCODE = 'N6550';
  ELSIF NOT fits THEN
    RAISE EXCEPTION 'PLS-00306: wrong number or types of arguments in call to ''%''', upper(routine)
      USING ERRCODE = 'N6550';
  END IF;
  EXECUTE CASE kind WHEN 'p' THEN 'CALL ' ELSE 'SELECT ' END || routine || '(' || arguments || ')';
END
$$
/
