// SPDX-License-Identifier: MIT
#ifndef CLSS_CLASTOOL_CLASTOOL_COST_ORDER_H_
#define CLSS_CLASTOOL_CLASTOOL_COST_ORDER_H_

#include <cstddef>

/// An expected cost and the place of its category.
struct vx_PlacedCost {
  double cost;
  std::size_t place;
};

/// Sorts `count` items ascending by cost, equal ones in the order given, and returns where they
/// are then: `items` or `room`, which holds as many.
///
/// `<` is the only comparison; where costs are NaN it is no ordering, and all the same every item
/// is kept and nothing outside is touched.
vx_PlacedCost* vx_sortByCost(vx_PlacedCost* items, vx_PlacedCost* room, std::size_t count);

#endif  // CLSS_CLASTOOL_CLASTOOL_COST_ORDER_H_
