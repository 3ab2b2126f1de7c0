-- Is the mail set-up usable? 0, or the number of what is wrong, with a message in words.

CREATE OR REPLACE FUNCTION check_smtp_val (nErrCode OUT NUMBER, sErrMsg OUT VARCHAR2) RETURN NUMBER AS
BEGIN
  SELECT MAX(VALUE) AS smtp_host FROM ZR_SYSTEM_VALUES_V WHERE NAME = 'SmtpHost';
  SELECT MAX(TO_NUMBER(VALUE)) AS smtp_port FROM ZR_SYSTEM_VALUES_V WHERE NAME = 'SmtpPort';
  SELECT CASE WHEN :smtp_host IS NULL THEN 1
              WHEN :smtp_port BETWEEN 1 AND 65535 THEN 0
              ELSE 2 END AS status FROM DUAL;
  SELECT :status AS nErrCode,
         CASE :status WHEN 0 THEN 'Mail goes to ' || :smtp_host || ':' || :smtp_port
                      WHEN 1 THEN 'System variable SmtpHost is not set.'
                      ELSE 'System variable SmtpPort is not a port.' END AS sErrMsg,
         :status AS return_value
    FROM DUAL;
END;
/
