-- The product as installed, machines that have been here before, and the digits.

INSERT INTO PM_PRODUCT_INFO (Property, Value) VALUES ('ProductName','Norvasta')
/
INSERT INTO PM_PRODUCT_INFO (Property, Value) VALUES ('ProductFullName','Norvasta Performance Management')
/
INSERT INTO PM_PRODUCT_INFO (Property, Value) VALUES ('ProductVersion','7.3')
/
INSERT INTO PM_PRODUCT_INFO (Property, Value) VALUES ('ProductRelease','7.3.0')
/
INSERT INTO PM_PRODUCT_INFO (Property, Value) VALUES ('ProductType','Enterprise Server')
/
INSERT INTO PM_PRODUCT_INFO (Property, Value) VALUES ('MainAppIconFile','norvasta.ico')
/
INSERT INTO PM_PRODUCT_INFO (Property, Value) VALUES ('TimeSlices','24')
/
INSERT INTO PM_PRODUCT_INFO (Property, Value) VALUES ('BusyHourTimeSlices','96')
/
INSERT INTO PM_ClientMachine (Id, Domain, MachineName) VALUES (SQ_ClientMachine.NEXTVAL,'PLANNING','DESK-0417')
/
INSERT INTO PM_ClientMachine (Id, Domain, MachineName) VALUES (SQ_ClientMachine.NEXTVAL,'PLANNING','DESK-0422')
/
INSERT INTO PM_ClientMachine (Id, Domain, MachineName) VALUES (SQ_ClientMachine.NEXTVAL,'OPERATIONS','NOC-WALL-1')
/
INSERT INTO PM_PIVOT (N) VALUES (0)
/
INSERT INTO PM_PIVOT (N) VALUES (1)
/
INSERT INTO PM_PIVOT (N) VALUES (2)
/
INSERT INTO PM_PIVOT (N) VALUES (3)
/
INSERT INTO PM_PIVOT (N) VALUES (4)
/
INSERT INTO PM_PIVOT (N) VALUES (5)
/
INSERT INTO PM_PIVOT (N) VALUES (6)
/
INSERT INTO PM_PIVOT (N) VALUES (7)
/
INSERT INTO PM_PIVOT (N) VALUES (8)
/
INSERT INTO PM_PIVOT (N) VALUES (9)
/
