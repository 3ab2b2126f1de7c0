-- Is the mail set-up usable? 0, or the number of what is wrong, with a message in words.

CREATE OR REPLACE FUNCTION check_smtp_val (OUT return_value numeric, OUT nErrCode numeric, OUT sErrMsg varchar)
LANGUAGE plpgsql STABLE AS $$
DECLARE
  smtp_host varchar;
  smtp_port numeric;
BEGIN
  SELECT max(VALUE) FILTER (WHERE NAME = 'SmtpHost'), max(VALUE::numeric) FILTER (WHERE NAME = 'SmtpPort')
    INTO smtp_host, smtp_port FROM ZR_SYSTEM_VALUES_V;
  IF smtp_host IS NULL THEN
    nErrCode := 1;
    sErrMsg := 'System variable SmtpHost is not set.';
  ELSIF smtp_port BETWEEN 1 AND 65535 THEN
    nErrCode := 0;
    sErrMsg := 'Mail goes to ' || smtp_host || ':' || smtp_port;
  ELSE
    nErrCode := 2;
    sErrMsg := 'System variable SmtpPort is not a port.';
  END IF;
  return_value := nErrCode;
END
$$
/
