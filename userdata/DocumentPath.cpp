#include "userdata/DocumentPath.h"

#include "include/GlobalConfig.h"

std::string DocumentPath(const char* name) {
    return GetConfigInstance().user_data_path + name;
}
