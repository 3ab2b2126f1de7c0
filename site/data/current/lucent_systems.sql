-- The network's systems.

INSERT INTO luc_ent_system (System_Id, System_Name, Release_No) VALUES (1,'MSC Northgate',16)
/
INSERT INTO luc_ent_system (System_Id, System_Name, Release_No) VALUES (2,'MSC Harbour',17)
/
INSERT INTO luc_ent_system (System_Id, System_Name, Release_No) VALUES (3,'MSC Southfield',18)
/
