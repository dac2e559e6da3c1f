#include "core/thread_key.h"
