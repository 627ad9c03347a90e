#pragma once

#include "host/command_line.h"
#include "host/counters.h"
#include "host/documents.h"
#include "host/handles.h"
#include "host/placement.h"
#include "host/records.h"
#include "host/references.h"
#include "host/saving.h"
#include "host/values.h"

/// The embedded drawing database as tools and tests see it: all of it. One thread.
