-- The switches. Report_Archive belongs to a product of another department; clients of this one ignore it.

INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Channel_Set_Plans_Category','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Confidence_Reports_Category','N')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('DataSources_Categories','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Notes_Category','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('CPFail_Group','N')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('EVDO_PCMD_Group','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Graph_Group','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Map_Group','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('PCMD_Group','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('SES_Group','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Soft_Alarms_Group','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('UDR_Group','N')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Grade_of_Service_Defaults_Tool','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Message_of_the_Day_Tool','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Express_Reports','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('EN_SNMP_Support','N')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Aggregator_Job_Type','N')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Flexible_Start_Of_Week','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('FlexibleAggregation','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Show_Check_Data_Availability','N')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Time_Zone_Scheduling','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Html_Help','Y')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('ENABLE_SOFTALARM_ID','N')
/
INSERT INTO PM_Feature_Changes (Feature, Enabled) VALUES ('Report_Archive','Y')
/
