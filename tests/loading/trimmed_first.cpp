#include <Vel/DefineModule.h>
#include <Vel/testing/NetTypes.h>

VEL_MODULE(trimmedFirst, Net::Types)
