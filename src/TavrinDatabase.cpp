#include "TavrinDatabase.h"
