#include "device/adb_device_manager.h"
