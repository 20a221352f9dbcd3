#include <Brixo/PhysicalAddr.h>

#include <Vel/value/Define.h>

VEL_DEFINE_VALUE(PhysicalAddr)
