-- Looks up a user for another server, or creates one. "TRUE", or what stands in the way; 20011 and 20012 for users who
-- may not work from another server. Names ignore case. The password is only required, it is not kept here.

CREATE OR REPLACE FUNCTION EA_FindOrCreateUser (sUser IN VARCHAR2, sPwd IN VARCHAR2, bCreate IN VARCHAR2)
RETURN VARCHAR2 AS
BEGIN
  SELECT Id AS user_id, Is_Locked AS locked, Is_Remote AS remote, Is_Data_Admin AS admin FROM EA_USER
   WHERE UPPER(Name) = UPPER(:sUser);
  SELECT RAISE_APPLICATION_ERROR(-20011, 'User Not an Enterprise Remote User.') FROM DUAL WHERE :remote = 'N';
  SELECT RAISE_APPLICATION_ERROR(-20012, 'User Not a Data Admin User.') FROM DUAL WHERE :admin = 'N';
  SELECT CASE WHEN :locked = 'Y' THEN 'USER IS LOCKED'
              WHEN :user_id IS NOT NULL THEN 'TRUE'
              WHEN :bCreate = 'FALSE' THEN 'USER DOESN''T EXIST'
              WHEN LENGTH(:sUser) > 0 AND LENGTH(:sPwd) > 0 THEN 'TRUE'
              ELSE 'USER NAME AND PASSWORD REQUIRED' END AS answer FROM DUAL;
  INSERT INTO EA_USER (Id, Name, Is_Remote, Is_Data_Admin, Is_Locked, Created)
  SELECT EA_USER_SQ.NEXTVAL, :sUser, 'Y', 'Y', 'N', SYSDATE FROM DUAL
   WHERE :user_id IS NULL AND :answer = 'TRUE';
  SELECT :answer AS return_value FROM DUAL;
END;
/
