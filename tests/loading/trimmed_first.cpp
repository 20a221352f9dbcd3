#include <Vel/DefineModule.h>
#include <Vel/testing/NetTypes.h>

VEL_MODULE(trimmedFirst, Net::Protocol, Net::Port, Net::LowPort, Net::Endpoint, Net::Route,
           Net::Table)
