#pragma once
// The whole public interface of TavrinDatabase.

#include "base/DatabaseException.h"
#include "base/Encoding.h"
#include "base/Exception.h"
#include "base/MessageBuilder.h"
#include "base/MessageValidator.h"
#include "base/Singleton.h"
#include "base/Status.h"
