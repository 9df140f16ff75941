// state_writer NUMBER: sets every setting that has a setter and outlasts a reboot.
#include <string>

#include "device/led.h"
#include "state/state_files.h"

int main(int argc, char **argv) {
    const char *const value = argc == 2 ? argv[1] : "0";
    const bool failed = api_etcd_url_set(value) != 0 || api_cloud_config_number_set(value) != 0 ||
                        api_zorb_cloud_register_set(std::stoi(value)) != 0;
    return failed ? 1 : 0;
}
