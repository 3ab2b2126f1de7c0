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
-- Calls `routine` with `arguments`, expressions of this server, those of named arguments as '"name" => expression': only
-- the catalogue knows whether it is a function or a procedure, and which arguments are dates.
CREATE OR REPLACE FUNCTION sabrel_dictionary.run (routine text, arguments text[])
RETURNS void LANGUAGE plpgsql AS $$
DECLARE
  given CONSTANT integer := cardinality(arguments);
  parts CONSTANT text[] := parse_ident(routine);
  size CONSTANT integer := array_length(parts, 1);
  kind "char";
  fits boolean;
  types regtype[];
  names text[];
  routines integer;
  written text[] := '{}';
  argument text;
  type regtype;
BEGIN
  SELECT p.prokind, given BETWEEN p.pronargs - p.pronargdefaults AND CASE WHEN p.prokind = 'p' THEN
             coalesce(array_length(p.proallargtypes, 1), p.pronargs) ELSE p.pronargs END,
         CASE WHEN p.prokind = 'p' THEN coalesce(p.proallargtypes, p.proargtypes) ELSE p.proargtypes END,
         CASE WHEN p.prokind = 'p' OR p.proargmodes IS NULL THEN p.proargnames
              ELSE ARRAY(SELECT a.name FROM unnest(p.proargnames, p.proargmodes) AS a (name, mode)
                          WHERE a.mode IN ('i', 'b', 'v')) END, count(*) OVER ()
    INTO kind, fits, types, names, routines
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
  FOR i IN 1 .. given LOOP
    argument := substring(arguments[i] FROM '^"(?:[^"]|"")*" => ');
    type := CASE WHEN argument IS NULL THEN types[array_lower(types, 1) + i - 1]
                 ELSE types[array_lower(types, 1) - 1
                            + array_position(names, (parse_ident(left(argument, -4)))[1])] END;
    IF routines = 1 AND type IN ('timestamp'::regtype, 'timestamptz'::regtype, 'date'::regtype) THEN
      written[i] := coalesce(argument, '') || 'sabrel_dictionary.date_argument('
                    || pg_catalog.substr(arguments[i], coalesce(pg_catalog.length(argument), 0) + 1) || ')'
                    || CASE WHEN type = 'timestamp'::regtype THEN '' ELSE '::' || type::text END;
    ELSE
      written[i] := arguments[i];
    END IF;
  END LOOP;
  EXECUTE CASE kind WHEN 'p' THEN 'CALL ' ELSE 'SELECT ' END || routine || '(' || array_to_string(written, ', ') || ')';
END
$$
/
-- The session's format, for dates where a statement names none.
CREATE OR REPLACE FUNCTION sabrel_dictionary.date_format () RETURNS text
LANGUAGE sql STABLE PARALLEL SAFE RETURN coalesce(nullif(current_setting('sabrel.date_format', true), ''), 'DD-MON-RR')
/
-- What a format may begin with.
CREATE OR REPLACE FUNCTION sabrel_dictionary.date_elements () RETURNS text
LANGUAGE sql IMMUTABLE PARALLEL SAFE
RETURN '(?i)^(?:YYYY|YYY|YY|RRRR|RR|MONTH|MON|MM|MI|DDD|DD|DAY|DY|D|HH24|HH12|HH|'
       'SSSSS|SS|A\.M\.|P\.M\.|AM|PM|Q|J|FM|[^A-Za-z0-9])'
/
CREATE OR REPLACE PROCEDURE sabrel_dictionary.set_date_format (format text) LANGUAGE plpgsql AS $$
DECLARE
  rest text := format;
  element text;
BEGIN
  LOOP
    element := CASE WHEN left(rest, 1) = '"' THEN substring(rest FROM '^"[^"]*"')
                    ELSE substring(rest FROM sabrel_dictionary.date_elements()) END;
    IF element IS NULL THEN
      RAISE EXCEPTION 'date format not recognized: %', format USING ERRCODE = 'N1821';
    END IF;
    rest := pg_catalog.substr(rest, pg_catalog.length(element) + 1);
    EXIT WHEN rest = '';
  END LOOP;
  PERFORM set_config('sabrel.date_format', format, false);
END
$$
/
