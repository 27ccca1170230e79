#pragma once
// The purchase-order model of examples/, under the name its source includes,
// so that a benchmark can compile that source into itself.
#include "../../examples/model/PurchaseOrder.h"
