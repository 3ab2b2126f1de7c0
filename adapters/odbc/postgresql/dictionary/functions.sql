-- Oracle's functions where the server and its extension have none of the name or one that answers otherwise: an empty
-- text is null, days are seconds, what cannot be understood fails with Oracle's number.

-- Texts of values.
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_char (value text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN value
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_char (value numeric) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN CASE WHEN value > -1 AND value < 1 AND value <> 0 THEN pg_catalog.replace(trim_scale(value)::text, '0.', '.')
            ELSE trim_scale(value)::text END
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_char (value bigint) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN value::text
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_char (value double precision) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN sabrel_dictionary.to_char(value::numeric)
/
-- FM is for all that follows, the server wants it at each element; RR writes as YY does.
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_char (value timestamp, format text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN pg_catalog.to_char(value, CASE
  WHEN format ~* 'FM' THEN
    regexp_replace(
      regexp_replace(regexp_replace(regexp_replace(format, 'FM', '', 'gi'), 'RRRR', 'YYYY', 'gi'), 'RR', 'YY', 'gi'),
      '(YYYY|YYY|YY|MONTH|MON|MM|MI|DDD|DD|DAY|HH24|HH12|HH|SSSSS|SS)(?=(?:[^"]*"[^"]*")*[^"]*$)', 'FM\1', 'gi')
  WHEN format ~* 'RR' THEN regexp_replace(regexp_replace(format, 'RRRR', 'YYYY', 'gi'), 'RR', 'YY', 'gi')
  ELSE format END)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_char (value timestamp) RETURNS text
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.to_char(value, sabrel_dictionary.date_format())
/
-- A number that has no room is all "#".
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_char (value numeric, format text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN CASE WHEN strpos(pg_catalog.to_char(value, format), '#') > 0
            THEN repeat('#', pg_catalog.length(pg_catalog.to_char(value, format)))
            ELSE pg_catalog.to_char(value, format) END
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_char (value text, format text) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN sabrel_dictionary.to_char(value::numeric, format)
/
-- Numbers of texts; a format only says which signs to pass over.
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_number (value text) RETURNS numeric
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN nullif(value, '')::numeric
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_number (value numeric) RETURNS numeric
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN value
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_number (value text, format text) RETURNS numeric
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN translate(value, ',$', '')::numeric
/
-- Texts.
CREATE OR REPLACE FUNCTION sabrel_dictionary.text_or_null (value text) RETURNS text
LANGUAGE sql IMMUTABLE PARALLEL SAFE RETURN nullif(value, '')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.length (value text) RETURNS integer
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN pg_catalog.length(nullif(value, ''))
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.length (value numeric) RETURNS integer
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN pg_catalog.length(sabrel_dictionary.to_char(value))
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.substr (value text, start numeric, size numeric DEFAULT 2147483647)
RETURNS text LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN nullif(CASE WHEN size < 1 OR start < -pg_catalog.length(value) THEN NULL
                   WHEN start < 0 THEN
                     left(right(value, -pg_catalog.trunc(start)::integer), pg_catalog.trunc(size)::integer)
                   ELSE left(pg_catalog.substr(value, greatest(pg_catalog.trunc(start), 1)::integer),
                             pg_catalog.trunc(size)::integer) END, '')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.instr
  (value text, part text, start numeric DEFAULT 1, occurrence numeric DEFAULT 1) RETURNS integer
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN CASE WHEN start = 0 THEN 0
            ELSE oracle.instr(value, part, pg_catalog.trunc(start)::integer, pg_catalog.trunc(occurrence)::integer) END
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.replace (value text, part text, by_text text DEFAULT '') RETURNS text
LANGUAGE sql IMMUTABLE PARALLEL SAFE
RETURN nullif(CASE WHEN part IS NULL THEN value ELSE pg_catalog.replace(value, part, coalesce(by_text, '')) END, '')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.trim (value text, characters text DEFAULT ' ') RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN nullif(pg_catalog.btrim(value, characters), '')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.ltrim (value text, characters text DEFAULT ' ') RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN nullif(pg_catalog.ltrim(value, characters), '')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.rtrim (value text, characters text DEFAULT ' ') RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN nullif(pg_catalog.rtrim(value, characters), '')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.lpad (value text, width numeric, filler text DEFAULT ' ') RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN nullif(pg_catalog.lpad(value, width::integer, filler), '')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.rpad (value text, width numeric, filler text DEFAULT ' ') RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN nullif(pg_catalog.rpad(value, width::integer, filler), '')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.chr (code numeric) RETURNS text
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN pg_catalog.chr(code::integer)
/
-- Numbers, and values of any type.
CREATE OR REPLACE FUNCTION sabrel_dictionary.mod (number numeric, divisor numeric) RETURNS numeric
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN CASE WHEN divisor = 0 THEN number ELSE pg_catalog.mod(number, divisor) END
/
-- NVL of values of one type; beside a text, a number becomes one, and beside a number a text becomes a number.
DO $$
DECLARE
  o record;
BEGIN
  FOR o IN
    SELECT t AS a, t AS b
      FROM unnest(ARRAY['text', 'integer', 'bigint', 'numeric', 'double precision', 'timestamp', 'bytea']) t
    UNION ALL VALUES ('text', 'numeric'), ('numeric', 'text')
  LOOP
    EXECUTE format('CREATE OR REPLACE FUNCTION sabrel_dictionary.nvl (value %1$s, otherwise %2$s) RETURNS %1$s'
                   ' LANGUAGE sql IMMUTABLE PARALLEL SAFE RETURN coalesce(value, %3$s)', o.a, o.b,
                   CASE WHEN o.a = o.b THEN 'otherwise' WHEN o.a = 'text' THEN 'sabrel_dictionary.to_char(otherwise)'
                        ELSE 'otherwise::numeric' END);
  END LOOP;
  FOR o IN SELECT t AS a FROM unnest(ARRAY['text', 'numeric', 'timestamp']) t LOOP
    EXECUTE format('CREATE OR REPLACE FUNCTION sabrel_dictionary.nvl2'
                   ' (value %s, known anycompatible, missing anycompatible) RETURNS anycompatible'
                   ' LANGUAGE sql IMMUTABLE PARALLEL SAFE'
                   ' AS ''SELECT CASE WHEN value IS NULL THEN missing ELSE known END''', o.a);
  END LOOP;
END
$$
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.greatest (first anycompatible, VARIADIC others anycompatiblearray)
RETURNS anycompatible LANGUAGE sql IMMUTABLE PARALLEL SAFE
AS 'SELECT CASE WHEN first IS NULL OR array_position(others, NULL) IS NOT NULL THEN NULL
                ELSE (SELECT max(value) FROM unnest(first || others) value) END'
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.least (first anycompatible, VARIADIC others anycompatiblearray)
RETURNS anycompatible LANGUAGE sql IMMUTABLE PARALLEL SAFE
AS 'SELECT CASE WHEN first IS NULL OR array_position(others, NULL) IS NOT NULL THEN NULL
                ELSE (SELECT min(value) FROM unnest(first || others) value) END'
/
-- Functions of texts, of dates: each is the text in the session's format.
DO $$
DECLARE
  o record;
BEGIN
  FOR o IN
    SELECT * FROM (VALUES
      ('upper', '', '', 'text'), ('lower', '', '', 'text'), ('length', '', '', 'integer'),
      ('substr', ', start numeric, size numeric DEFAULT 2147483647', ', start, size', 'text'),
      ('instr', ', part text, start numeric DEFAULT 1, occurrence numeric DEFAULT 1', ', part, start, occurrence',
       'integer'),
      ('replace', ', part text, by_text text DEFAULT ''''', ', part, by_text', 'text'),
      ('trim', ', characters text DEFAULT '' ''', ', characters', 'text'),
      ('ltrim', ', characters text DEFAULT '' ''', ', characters', 'text'),
      ('rtrim', ', characters text DEFAULT '' ''', ', characters', 'text'),
      ('lpad', ', width numeric, filler text DEFAULT '' ''', ', width, filler', 'text'),
      ('rpad', ', width numeric, filler text DEFAULT '' ''', ', width, filler', 'text')
    ) AS functions (name, parameters, arguments, result)
  LOOP
    EXECUTE format('CREATE OR REPLACE FUNCTION sabrel_dictionary.%1$s (value timestamp%2$s) RETURNS %4$s'
                   ' LANGUAGE sql STABLE PARALLEL SAFE RETURN %5$s.%1$s(sabrel_dictionary.to_char(value)%3$s)',
                   o.name, o.parameters, o.arguments, o.result,
                   CASE WHEN o.name IN ('upper', 'lower') THEN 'pg_catalog' ELSE 'sabrel_dictionary' END);
  END LOOP;
END
$$
/
