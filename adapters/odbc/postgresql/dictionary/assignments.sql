-- What is assigned: a text to a date and a date to a text go by the session's format, a text to anything else as a
-- constant of that type would. Casts that a statement writes out stay the server's own; those of Oracle's statements
-- are written otherwise.

DO $$
DECLARE
  target text;
  source text;
BEGIN
  FOREACH target IN ARRAY ARRAY['timestamp', 'timestamptz', 'date'] LOOP
    FOREACH source IN ARRAY ARRAY['text', 'bpchar'] LOOP
      EXECUTE format('CREATE OR REPLACE FUNCTION sabrel_dictionary.assigned_%1$s (value %2$s, modifier integer,'
                     ' is_explicit boolean) RETURNS %1$s LANGUAGE sql STABLE STRICT PARALLEL SAFE RETURN CASE WHEN'
                     ' is_explicit THEN %1$s_in(%3$s) ELSE sabrel_dictionary.to_date(value::text)::%1$s END',
                     target, source,
                     CASE target WHEN 'date' THEN 'value::cstring' ELSE 'value::cstring, 0, modifier' END);
    END LOOP;
  END LOOP;
END
$$
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.assigned_text (value timestamp, modifier integer, is_explicit boolean)
RETURNS text LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN CASE WHEN is_explicit THEN format('%s', value) ELSE sabrel_dictionary.to_char(value) END
/
DO $$
DECLARE
  o record;
BEGIN
  FOR o IN
    SELECT s AS source, t AS target, format('FUNCTION sabrel_dictionary.assigned_%s (%s, integer, boolean)', t,
                                            CASE s WHEN 'bpchar' THEN s ELSE 'text' END) AS way
      FROM unnest(ARRAY['text', 'varchar', 'bpchar']) s, unnest(ARRAY['timestamp', 'timestamptz', 'date']) t
    UNION ALL
    SELECT 'timestamp', t, 'FUNCTION sabrel_dictionary.assigned_text (timestamp, integer, boolean)'
      FROM unnest(ARRAY['text', 'varchar', 'bpchar']) t
    UNION ALL
    SELECT s, t, 'INOUT'
      FROM unnest(ARRAY['text', 'varchar', 'bpchar']) s,
           unnest(ARRAY['smallint', 'integer', 'bigint', 'numeric', 'real', 'double precision', 'bytea', 'boolean',
                        'interval', 'time', 'uuid', 'json', 'jsonb']) t
  LOOP
    IF NOT EXISTS (SELECT FROM pg_catalog.pg_cast
                    WHERE castsource = o.source::regtype AND casttarget = o.target::regtype) THEN
      EXECUTE format('CREATE CAST (%s AS %s) WITH %s AS ASSIGNMENT', o.source, o.target, o.way);
    END IF;
  END LOOP;
END
$$
/
