// The noise and wobble banks of an engine, and the tables that its owner attaches to them.
#pragma once

#include "engine/sample_bank.h"
#include "engine/sample_table_set.h"
