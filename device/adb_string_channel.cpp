#include "device/adb_string_channel.h"
