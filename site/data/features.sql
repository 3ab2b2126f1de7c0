-- What is installed: some groups, categories, tools and tabs are active, some are switched off, some were never bought.
-- A category counts only when a group that holds it is active too: templates hang on the switched-off UDR group alone.
-- DOCPFail and the forecast tool are not installed; the help-files tab belongs to an application that is switched off.

INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (1,'CPFail','Y')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (2,'EVDOPCMD','N')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (3,'External','Y')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (4,'Graph','Y')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (5,'Map','Y')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (6,'PCMD','Y')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (7,'SES','Y')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (8,'Soft Alarms','Y')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (9,'UDR','N')
/
INSERT INTO PM_Groups (Group_Id, Group_Name, Group_Active) VALUES (10,'Reports','Y')
/
INSERT INTO PM_CATEGORIES (Category_ID, Category_Name, CategoryFunction, Category_Active)
VALUES (1,'Channel Set Plans','ChanSetPlanCategory','Y')
/
INSERT INTO PM_CATEGORIES (Category_ID, Category_Name, CategoryFunction, Category_Active)
VALUES (2,'Confidence Reports','ConfidenceRptCategory','N')
/
INSERT INTO PM_CATEGORIES (Category_ID, Category_Name, CategoryFunction, Category_Active)
VALUES (3,'Configuration Templates','CfgTemplateCategory','Y')
/
INSERT INTO PM_CATEGORIES (Category_ID, Category_Name, CategoryFunction, Category_Active)
VALUES (4,'ASCII Data Sources','ASCIIDataSourcesCategory','Y')
/
INSERT INTO PM_CATEGORIES (Category_ID, Category_Name, CategoryFunction, Category_Active)
VALUES (5,'Traffic Reports','TrafficRptCategory','Y')
/
INSERT INTO PM_GROUP_CATEGORIES (Group_ID, Category_ID) VALUES (10,1)
/
INSERT INTO PM_GROUP_CATEGORIES (Group_ID, Category_ID) VALUES (10,2)
/
INSERT INTO PM_GROUP_CATEGORIES (Group_ID, Category_ID) VALUES (9,3)
/
INSERT INTO PM_GROUP_CATEGORIES (Group_ID, Category_ID) VALUES (3,4)
/
INSERT INTO PM_GROUP_CATEGORIES (Group_ID, Category_ID) VALUES (10,4)
/
INSERT INTO PM_GROUP_CATEGORIES (Group_ID, Category_ID) VALUES (10,5)
/
INSERT INTO PM_Tools (Tool_ID, Tool_Name, Tool_Label)
VALUES (1,'ServiceGradeKit.CToolEntry_ServiceGrade','Grade of Service Defaults')
/
INSERT INTO PM_Tools (Tool_ID, Tool_Name, Tool_Label)
VALUES (2,'CapacityCalcKit.CToolEntry_CapacityCalc','Engineered Capacity Calculator')
/
INSERT INTO PM_Tools (Tool_ID, Tool_Name, Tool_Label)
VALUES (3,'DailyNoticeKit.CToolEntry_DailyNotice','Message of the Day')
/
INSERT INTO PM_APP_NAMES (App_ID, App_Name, Active) VALUES (1,'Report Manager','Y')
/
INSERT INTO PM_APP_NAMES (App_ID, App_Name, Active) VALUES (2,'Event Viewer','Y')
/
INSERT INTO PM_APP_NAMES (App_ID, App_Name, Active) VALUES (3,'Options','N')
/
INSERT INTO PM_TABS (Tab_ID, Control_Name) VALUES (1,'ReportPanes.XExpressReportPane')
/
INSERT INTO PM_TABS (Tab_ID, Control_Name) VALUES (2,'EventPanes.XSnmpEventPane')
/
INSERT INTO PM_TABS (Tab_ID, Control_Name) VALUES (3,'OptionPanes.XHelpFilesPane')
/
INSERT INTO PM_TABS (Tab_ID, Control_Name) VALUES (4,'ReportPanes.XScheduleReportPane')
/
INSERT INTO PM_APP_TABS (App_ID, Tab_ID, TabName, TabLabel, Active) VALUES (1,1,'Express','Express Reports','Y')
/
INSERT INTO PM_APP_TABS (App_ID, Tab_ID, TabName, TabLabel, Active) VALUES (1,4,'Schedule','Scheduled Reports','Y')
/
INSERT INTO PM_APP_TABS (App_ID, Tab_ID, TabName, TabLabel, Active) VALUES (2,2,'SNMP','SNMP Events','N')
/
INSERT INTO PM_APP_TABS (App_ID, Tab_ID, TabName, TabLabel, Active) VALUES (3,3,'Help','Help Files','Y')
/
INSERT INTO Job_Type (ID, Description) VALUES (1,'Report')
/
INSERT INTO Job_Type (ID, Description) VALUES (2,'Export')
/
INSERT INTO Job_Type (ID, Description) VALUES (3,'Aggregator')
/
INSERT INTO Job_Type (ID, Description) VALUES (4,'Soft Alarm')
/
INSERT INTO Job_Type (ID, Description) VALUES (5,'Purge')
/
