-- Arithmetic of dates and days, and what Oracle does with a text where a number is due.
-- The schema stands before pg_catalog in the search path, so that these operators win over the server's own.

CREATE OR REPLACE FUNCTION sabrel_dictionary.date_plus (moment timestamp, days numeric)
RETURNS timestamp LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN date_trunc('second', moment) + make_interval(secs => pg_catalog.round(days * 86400)::double precision)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.date_minus (moment timestamp, days numeric)
RETURNS timestamp LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN date_trunc('second', moment) + make_interval(secs => pg_catalog.round(days * -86400)::double precision)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.days_between (later timestamp, earlier timestamp)
RETURNS numeric LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN trim_scale(pg_catalog.round(extract(epoch FROM later OPERATOR(pg_catalog.-) earlier) / 86400, 20))
/
-- One function an operator and its types: the other types of numbers, numbers on the left, texts on either side.
DO $$
DECLARE
  o record;
BEGIN
  FOR o IN
    SELECT 'date_plus' AS name, '+' AS sign, 'timestamp' AS a, t AS b, 'timestamp' AS result,
           'sabrel_dictionary.date_plus($1, $2::numeric)' AS body
      FROM unnest(ARRAY['integer', 'bigint', 'double precision']) t
    UNION ALL
    SELECT 'date_plus', '+', t, 'timestamp', 'timestamp', 'sabrel_dictionary.date_plus($2, $1::numeric)'
      FROM unnest(ARRAY['numeric', 'integer', 'bigint', 'double precision']) t
    UNION ALL
    SELECT 'date_minus', '-', 'timestamp', t, 'timestamp', 'sabrel_dictionary.date_minus($1, $2::numeric)'
      FROM unnest(ARRAY['integer', 'bigint', 'double precision']) t
    UNION ALL
    SELECT 'date_plus', '+', 'timestamp', 'numeric', NULL, NULL
    UNION ALL
    SELECT 'date_minus', '-', 'timestamp', 'numeric', NULL, NULL
    UNION ALL
    SELECT 'days_between', '-', 'timestamp', 'timestamp', NULL, NULL
    UNION ALL
    SELECT 'number_' || name, sign, a, b, CASE WHEN sign ~ '[=<>]' THEN 'boolean' ELSE 'numeric' END,
           '$1::numeric OPERATOR(pg_catalog.' || sign || ') $2::numeric'
      FROM (VALUES ('eq', '='), ('ne', '<>'), ('lt', '<'), ('le', '<='), ('gt', '>'), ('ge', '>='),
                   ('plus', '+'), ('minus', '-'), ('times', '*'), ('by', '/')) AS signs (name, sign),
           (VALUES ('text', 'numeric'), ('numeric', 'text'), ('text', 'text')) AS types (a, b)
     WHERE a <> b OR sign !~ '[=<>]'
  LOOP
    IF o.result IS NOT NULL THEN
      EXECUTE format('CREATE OR REPLACE FUNCTION sabrel_dictionary.%s (%s, %s) RETURNS %s LANGUAGE sql'
                     ' IMMUTABLE STRICT PARALLEL SAFE RETURN %s', o.name, o.a, o.b, o.result, o.body);
    END IF;
    IF to_regoperator(format('sabrel_dictionary.%s(%s,%s)', o.sign, o.a, o.b)) IS NULL THEN
      EXECUTE format('CREATE OPERATOR sabrel_dictionary.%s (FUNCTION = sabrel_dictionary.%s, LEFTARG = %s,'
                     ' RIGHTARG = %s)', o.sign, o.name, o.a, o.b);
    END IF;
  END LOOP;
END
$$
/
