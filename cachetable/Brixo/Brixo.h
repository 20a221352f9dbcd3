// Brixo.h - every type of the product.
#pragma once

#include <Brixo/BrixoTypes.h>
#include <Brixo/CacheTableTypes.h>
#include <Brixo/constants.h>
