#pragma once

// Everything a host program needs from Orvane, in one include.

#include "orvane/axes/axes.h"
#include "orvane/axes/axis.h"
#include "orvane/core/array.h"
#include "orvane/core/color.h"
#include "orvane/core/currency.h"
#include "orvane/core/error.h"
#include "orvane/core/event.h"
#include "orvane/core/font.h"
#include "orvane/core/format.h"
#include "orvane/core/property_bag.h"
#include "orvane/data/data_set.h"
#include "orvane/data/data_sets.h"
#include "orvane/data/xyz_file.h"
#include "orvane/render/caption.h"
#include "orvane/render/cursor.h"
#include "orvane/render/faces.h"
#include "orvane/render/legend.h"
#include "orvane/render/line.h"
#include "orvane/version.h"
