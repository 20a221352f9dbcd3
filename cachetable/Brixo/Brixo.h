// Brixo.h - every type of the product.
//
// Test: none; gathers headers.
#pragma once

#include <Brixo/BrixoTypes.h>
#include <Brixo/CacheTableTypes.h>
#include <Brixo/constants.h>
