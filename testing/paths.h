// The folders of the device that the tests look into.
#pragma once

#include <string>

inline const std::string kSettings = "/mnt/data/iss_config/current_config/";
inline const std::string kStatus = "/tmp/app/cloud_tmp/";
inline const std::string kTurnFile = "/tmp/cloudwtpflag";
