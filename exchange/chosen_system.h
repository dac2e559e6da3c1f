#pragma once

#include "coordinates/coordinate_system.h"

class JsonFileManager;

/// The system at \a index of the store. An index that is not there gives a
/// system without a name and with zero axes.
CoordinateSystem chosen_system(const JsonFileManager* store, int index);
