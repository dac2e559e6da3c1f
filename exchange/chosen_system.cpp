#include "exchange/chosen_system.h"

#include "coordinates/json_file_manager.h"

CoordinateSystem chosen_system(const JsonFileManager* store, int index)
{
    return store == nullptr ? CoordinateSystem{} : store->systems.value(index);
}
