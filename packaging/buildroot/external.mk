include $(sort $(wildcard $(BR2_EXTERNAL_CLOUDAGENT_PATH)/package/*/*.mk))
