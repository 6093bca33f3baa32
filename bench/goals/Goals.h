// The benchmarks, by theme. Each is called THEME/INPUT/WHO; who is the library, the floor, the literal reader or a peer.
#pragma once

namespace bench {

void registerPasses();   // directory, iteration, search without index
void registerFields();   // getters, numbers, headings
void registerSmall();    // a small file; memory of a pass
void registerIndexes();  // index of a cached table: time and memory
void registerLookups();  // a line by its key

}  // namespace bench
