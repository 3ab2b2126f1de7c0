-- Dates, read and cut as Oracle does.

-- Dates of texts, read as Oracle reads them. Immutable for the sake of whole dates, of which nearly all are.
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_date (value text, format text) RETURNS timestamp
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
DECLARE
  months CONSTANT text := 'JANFEBMARAPRMAYJUNJULAUGSEPOCTNOVDEC';
  rest text := btrim(value);
  picture text := format;
  next text;
  has_end boolean;
  ended boolean := true;
  element text;
  piece text;
  number integer;
  low integer;
  high integer;
  code text;
  reason text;
  year integer := extract(year FROM current_date);
  month integer := extract(month FROM current_date);
  day integer := 1;
  hour integer := 0;
  hour12 integer;
  is_afternoon boolean := false;
  minute integer := 0;
  second integer := 0;
BEGIN
  IF format = 'YYYY-MM-DD HH24:MI:SS' AND
     value ~ '^(0[1-9]|[1-9]\d)\d\d-(0[1-9]|1[0-2])-(0[1-9]|1\d|2[0-8]) ([01]\d|2[0-3]):[0-5]\d:[0-5]\d$' THEN
    RETURN timestamp_in(value::cstring, 0, -1);
  END IF;
  IF value = '' THEN
    RETURN NULL;
  END IF;
  WHILE picture <> '' LOOP
    IF left(picture, 1) = '"' THEN
      element := substring(picture FROM '^"[^"]*"');
    ELSE
      element := substring(picture FROM sabrel_dictionary.date_elements());
    END IF;
    IF element IS NULL THEN
      RAISE EXCEPTION 'date format not recognized' USING ERRCODE = 'N1821';
    END IF;
    picture := pg_catalog.substr(picture, pg_catalog.length(element) + 1);
    next := upper(left(regexp_replace(picture, '^(?:FM)+', '', 'i'), 3));
    has_end := ended;
    ended := true;
    element := CASE WHEN element ~ '^[A-Za-z]' THEN upper(element) ELSE element END;
    CONTINUE WHEN element = 'FM';
    IF rest = '' THEN
      CONTINUE WHEN element ~ '^[^A-Z"]' OR
                    element IN ('HH24', 'HH12', 'HH', 'MI', 'SS', 'SSSSS', 'AM', 'PM', 'A.M.', 'P.M.');
      RAISE EXCEPTION 'input value not long enough for date format' USING ERRCODE = 'N1840';
    ELSIF left(element, 1) = '"' THEN
      element := btrim(element, '"');
      IF NOT starts_with(rest, element) THEN
        RAISE EXCEPTION 'literal does not match format string' USING ERRCODE = 'N1861';
      END IF;
      rest := pg_catalog.substr(rest, pg_catalog.length(element) + 1);
      CONTINUE;
    ELSIF element ~ '^[^A-Z]' THEN
      IF rest ~ '^[A-Za-z0-9]' THEN
        -- The text may leave it out where the end of what was read is clear.
        IF NOT has_end OR (rest ~ '^[A-Za-z]') <> (next ~ '^(?:MON|DAY|DY|[AP]M|[AP]\.M|")') THEN
          RAISE EXCEPTION 'literal does not match format string' USING ERRCODE = 'N1861';
        END IF;
      ELSE
        rest := pg_catalog.substr(rest, 2);
      END IF;
      CONTINUE;
    ELSIF element IN ('AM', 'PM', 'A.M.', 'P.M.') THEN
      piece := upper(substring(rest FROM '(?i)^(?:[AP]\.M\.|[AP]M)'));
      IF piece IS NULL THEN
        RAISE EXCEPTION 'AM/A.M. or PM/P.M. required' USING ERRCODE = 'N1855';
      END IF;
      is_afternoon := left(piece, 1) = 'P';
      rest := pg_catalog.substr(rest, pg_catalog.length(piece) + 1);
      CONTINUE;
    ELSIF element IN ('MON', 'MONTH') OR (element = 'MM' AND rest ~ '^[A-Za-z]') THEN
      piece := substring(rest FROM '(?i)^(?:January|February|March|April|May|June|July|August|September|October|'
                                   'November|December|Jan|Feb|Mar|Apr|Jun|Jul|Aug|Sep|Oct|Nov|Dec)');
      IF piece IS NULL THEN
        RAISE EXCEPTION 'not a valid month' USING ERRCODE = 'N1843';
      END IF;
      month := (strpos(months, upper(left(piece, 3))) + 2) / 3;
      rest := pg_catalog.substr(rest, pg_catalog.length(piece) + 1);
      CONTINUE;
    END IF;
    high := NULL;
    CASE element
      WHEN 'MM' THEN low := 1; high := 12; code := 'N1843'; reason := 'not a valid month';
      WHEN 'DD' THEN
        low := 1; high := 31; code := 'N1847'; reason := 'day of month must be between 1 and last day of month';
      WHEN 'HH24' THEN low := 0; high := 23; code := 'N1850'; reason := 'hour must be between 0 and 23';
      WHEN 'HH12', 'HH' THEN low := 1; high := 12; code := 'N1849'; reason := 'hour must be between 1 and 12';
      WHEN 'MI' THEN low := 0; high := 59; code := 'N1851'; reason := 'minutes must be between 0 and 59';
      WHEN 'SS' THEN low := 0; high := 59; code := 'N1852'; reason := 'seconds must be between 0 and 59';
      WHEN 'SSSSS' THEN
        low := 0; high := 86399; code := 'N1853'; reason := 'seconds in day must be between 0 and 86399';
      WHEN 'YYYY', 'RRRR', 'YYY', 'YY', 'RR' THEN low := 0;
      ELSE RAISE EXCEPTION 'format code cannot appear in date input format' USING ERRCODE = 'N1820';
    END CASE;
    piece := substring(rest FROM '^\d{1,' || CASE WHEN element = 'HH24' THEN 2 ELSE pg_catalog.length(element) END || '}');
    IF element IN ('HH12', 'HH') THEN
      piece := substring(rest FROM '^\d{1,2}');
    ELSIF element IN ('YY', 'RR') AND next ~ '^(?:$|[^A-Z0-9]|MON|DAY|DY|[AP]M|[AP]\.M)' THEN
      -- A year in full does for the short forms, too, where its end can be seen.
      piece := coalesce(substring(rest FROM '^\d{4}'), piece);
    END IF;
    IF piece IS NULL THEN
      RAISE EXCEPTION 'a non-numeric character was found where a numeric was expected' USING ERRCODE = 'N1858';
    END IF;
    rest := pg_catalog.substr(rest, pg_catalog.length(piece) + 1);
    ended := pg_catalog.length(piece) >= CASE element WHEN 'HH24' THEN 2 WHEN 'HH12' THEN 2
                                                      ELSE pg_catalog.length(element) END;
    number := piece::integer;
    IF number NOT BETWEEN low AND high THEN
      RAISE EXCEPTION USING ERRCODE = code, MESSAGE = reason;
    END IF;
    CASE element
      WHEN 'MM' THEN month := number;
      WHEN 'DD' THEN day := number;
      WHEN 'HH24' THEN hour := number;
      WHEN 'HH12', 'HH' THEN hour12 := number;
      WHEN 'MI' THEN minute := number;
      WHEN 'SS' THEN second := number;
      WHEN 'SSSSS' THEN hour := number / 3600; minute := number / 60 % 60; second := number % 60;
      WHEN 'YY' THEN
        year := CASE WHEN pg_catalog.length(piece) <= 2 THEN year / 100 * 100 + number ELSE number END;
      WHEN 'YYY' THEN year := year / 1000 * 1000 + number;
      ELSE
        IF element IN ('RR', 'RRRR') AND pg_catalog.length(piece) <= 2 THEN
          year := (year / 100 + CASE WHEN number < 50 AND year % 100 >= 50 THEN 1
                                     WHEN number >= 50 AND year % 100 < 50 THEN -1 ELSE 0 END) * 100 + number;
        ELSE
          year := number;
        END IF;
    END CASE;
    IF year < 100 THEN
      RAISE EXCEPTION '(full) year must be between 100 and 9999' USING ERRCODE = 'N1841';
    END IF;
  END LOOP;
  IF rest <> '' THEN
    RAISE EXCEPTION 'date format picture ends before converting entire input string' USING ERRCODE = 'N1830';
  END IF;
  IF hour12 IS NOT NULL THEN
    hour := hour12 % 12 + CASE WHEN is_afternoon THEN 12 ELSE 0 END;
  END IF;
  IF day > extract(day FROM make_date(year, month, 1) + interval '1 month' - interval '1 day') THEN
    RAISE EXCEPTION 'date not valid for month specified' USING ERRCODE = 'N1839';
  END IF;
  RETURN make_timestamp(year, month, day, hour, minute, second);
END
$$
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_date (value text) RETURNS timestamp
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.to_date(value, sabrel_dictionary.date_format())
/
-- An argument of a call of a routine; it may have this form besides.
CREATE OR REPLACE FUNCTION sabrel_dictionary.date_argument (value text) RETURNS timestamp
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.to_date(value, CASE WHEN value ~ '^\d{4}-\d\d-\d\d( \d\d:\d\d:\d\d)?$'
                                             THEN 'YYYY-MM-DD HH24:MI:SS' ELSE sabrel_dictionary.date_format() END)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.date_argument (value timestamp) RETURNS timestamp
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN value
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_date (value numeric, format text) RETURNS timestamp
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN sabrel_dictionary.to_date(value::text, format)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.to_date (value timestamp, format text DEFAULT '') RETURNS timestamp
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN value
/
-- Dates cut and moved.
CREATE OR REPLACE FUNCTION sabrel_dictionary.trunc (moment timestamp) RETURNS timestamp
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN date_trunc('day', moment)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.trunc (moment timestamp, unit text) RETURNS timestamp
LANGUAGE plpgsql IMMUTABLE STRICT PARALLEL SAFE AS $$
BEGIN
  CASE upper(unit)
    WHEN 'MI' THEN RETURN date_trunc('minute', moment);
    WHEN 'HH', 'HH12', 'HH24' THEN RETURN date_trunc('hour', moment);
    WHEN 'DD', 'DDD', 'J' THEN RETURN date_trunc('day', moment);
    WHEN 'IW' THEN RETURN date_trunc('week', moment);
    WHEN 'DAY', 'DY', 'D' THEN
      RETURN date_trunc('day', moment) + make_interval(days => -extract(dow FROM moment)::integer);
    WHEN 'MM', 'MON', 'MONTH', 'RM' THEN RETURN date_trunc('month', moment);
    WHEN 'Q' THEN RETURN date_trunc('quarter', moment);
    WHEN 'YYYY', 'YEAR', 'SYYYY', 'SYEAR', 'YYY', 'YY', 'Y' THEN RETURN date_trunc('year', moment);
    ELSE
      RAISE EXCEPTION 'too many precision specifiers: no unit of TRUNC' USING ERRCODE = 'N1898';
  END CASE;
END
$$
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.trunc (number numeric, digits numeric DEFAULT 0) RETURNS numeric
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN pg_catalog.trunc(number, digits::integer)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.trunc (number double precision, digits numeric DEFAULT 0)
RETURNS numeric LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN pg_catalog.trunc(number::numeric, digits::integer)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.trunc (value text, unit text) RETURNS timestamp
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.trunc(sabrel_dictionary.to_date(value), unit)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.round (moment timestamp) RETURNS timestamp
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN date_trunc('day', moment + interval '12 hours')
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.round (number numeric, digits numeric DEFAULT 0) RETURNS numeric
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN pg_catalog.round(number, digits::integer)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.round (number double precision, digits numeric DEFAULT 0)
RETURNS numeric LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE RETURN pg_catalog.round(number::numeric, digits::integer)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.last_day (moment timestamp) RETURNS timestamp
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN date_trunc('month', moment) + interval '1 month' - interval '1 day' + moment::time::interval
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.add_months (moment timestamp, months numeric) RETURNS timestamp
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN CASE WHEN moment = sabrel_dictionary.last_day(moment)
            THEN sabrel_dictionary.last_day(moment + make_interval(months => pg_catalog.trunc(months)::integer))
            ELSE moment + make_interval(months => pg_catalog.trunc(months)::integer) END
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.months_between (later timestamp, earlier timestamp) RETURNS numeric
LANGUAGE sql IMMUTABLE STRICT PARALLEL SAFE
RETURN (extract(year FROM later) - extract(year FROM earlier)) * 12 + extract(month FROM later)
       - extract(month FROM earlier)
       + CASE WHEN extract(day FROM later) = extract(day FROM earlier)
                OR (later = sabrel_dictionary.last_day(later) AND earlier = sabrel_dictionary.last_day(earlier)) THEN 0
              ELSE (extract(day FROM later) - extract(day FROM earlier)
                    + (extract(epoch FROM later::time) - extract(epoch FROM earlier::time)) / 86400) / 31 END
/
-- The same of texts in the session's format.
CREATE OR REPLACE FUNCTION sabrel_dictionary.last_day (value text) RETURNS timestamp
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.last_day(sabrel_dictionary.to_date(value))
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.add_months (value text, months numeric) RETURNS timestamp
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.add_months(sabrel_dictionary.to_date(value), months)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.months_between (later text, earlier text) RETURNS numeric
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.months_between(sabrel_dictionary.to_date(later), sabrel_dictionary.to_date(earlier))
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.months_between (later text, earlier timestamp) RETURNS numeric
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.months_between(sabrel_dictionary.to_date(later), earlier)
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.months_between (later timestamp, earlier text) RETURNS numeric
LANGUAGE sql STABLE STRICT PARALLEL SAFE
RETURN sabrel_dictionary.months_between(later, sabrel_dictionary.to_date(earlier))
/
CREATE OR REPLACE FUNCTION sabrel_dictionary.nvl (value timestamp, otherwise text) RETURNS timestamp
LANGUAGE sql STABLE PARALLEL SAFE RETURN coalesce(value, sabrel_dictionary.to_date(otherwise))
/
