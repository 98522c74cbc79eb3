include $(sort $(wildcard $(BR2_EXTERNAL_WATCH_PATH)/*/*.mk))
