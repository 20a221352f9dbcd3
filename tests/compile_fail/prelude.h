// prelude.h - what the cases include, parsed once for all of them.
#pragma once

#include <Vel/KeyedCollection.h>
#include <Vel/MapMember.h>
#include <Vel/Notifiee.h>
#include <Vel/Notifier.h>
#include <Vel/Value.h>
#include <Vel/value/DeclareEntity.h>
#include <Vel/value/Define.h>
#include <Vel/value/DefineEnum.h>
#include <Vel/value/ObjectType.h>
#include <string>
