-- Looks up a user for another server, or creates one. "TRUE", or what stands in the way; 20011 and 20012 for users who
-- may not work from another server. Names ignore case. The password is only required, it is not kept here.

CREATE OR REPLACE FUNCTION EA_FindOrCreateUser (sUser varchar, sPwd varchar, bCreate varchar)
RETURNS varchar LANGUAGE plpgsql AS $$
DECLARE
  found_user EA_USER;
BEGIN
  SELECT * INTO found_user FROM EA_USER u WHERE upper(u.Name) = upper(sUser);
  IF found_user.Is_Remote = 'N' THEN
    PERFORM raise_application_error(-20011, 'User Not an Enterprise Remote User.');
  ELSIF found_user.Is_Data_Admin = 'N' THEN
    PERFORM raise_application_error(-20012, 'User Not a Data Admin User.');
  ELSIF found_user.Is_Locked = 'Y' THEN
    RETURN 'USER IS LOCKED';
  ELSIF found_user.Id IS NOT NULL THEN
    RETURN 'TRUE';
  ELSIF bCreate = 'FALSE' THEN
    RETURN 'USER DOESN''T EXIST';
  ELSIF sUser <> '' AND sPwd <> '' THEN
    INSERT INTO EA_USER (Id, Name, Is_Remote, Is_Data_Admin, Is_Locked, Created)
    VALUES (nextval('EA_USER_SQ'), sUser, 'Y', 'Y', 'N', sysdate());
    RETURN 'TRUE';
  END IF;
  RETURN 'USER NAME AND PASSWORD REQUIRED';
END
$$
/
