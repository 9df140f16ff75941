#include "state/device_identity.h"

char sys_mac_addr[32] = "";
char sys_mac_addr_compact[32] = "";
