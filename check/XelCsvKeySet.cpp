#include "check/XelCsvKeySet.h"

#include <algorithm>

void XelCsvKeySet::grow() {
  constexpr long FirstSize = 16;
  XelEnvBlock<Slot> former(env, std::max(FirstSize, 2 * slots.getCount()));
  std::swap(former, slots);
  std::fill_n(slots.get(), slots.getCount(), Slot{-1, 0, 0});
  for (long from = 0; from < former.getCount(); ++from) {
    if (former[from].offset < 0) continue;
    long index = placeOf(former[from].hash);
    while (slots[index].offset >= 0) index = next(index);
    slots[index] = former[from];
  }
}
