#include "core/code_tables.h"
