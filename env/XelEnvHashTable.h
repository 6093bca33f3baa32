// Chained hash table in an environment.
#pragma once

#include <new>
#include <utility>

#include "env/XelEnvOwned.h"

// Maps keys to values. Keys are kept as they are given, strings by pointer, so their text must live as long as the
// entry; values are not owned either. One thread at a time.
//
// A walk visits the buckets in ascending order and within a bucket the item added or moved last first.
template <class K, class V>
class XelEnvHashTable : public XelEnvObjectI {
 public:
  using HashFunction = long (*)(K key, long size);    // a bucket, 0 <= result < size
  using CompareFunction = long (*)(K left, K right);  // non-zero when equal

  // One entry.
  class Item {
   public:
    K getKey() const noexcept { return key; }
    V getValue() const noexcept { return value; }
    Item* getNext() const noexcept { return next; }
    void setKey(K newKey) noexcept { key = newKey; }
    void setValue(V newValue) noexcept { value = newValue; }
    void setNext(Item* newNext) noexcept { next = newNext; }

   private:
    Item* next = nullptr;
    K key{};
    V value{};
  };

  // Walk over all items. The table must not change meanwhile.
  class Iterator {
   public:
    explicit Iterator(const XelEnvHashTable* walked) noexcept : table(walked) {
      if (table != nullptr && table->buckets != nullptr) {
        index = 0;
        findHead();
      }
    }

    bool ok() const noexcept { return table != nullptr && item != nullptr; }

    // Value of the current item; only when ok().
    V operator*() const noexcept { return item->getValue(); }

    // Goes to the next item; a walk that has ended stays so.
    Iterator& operator++() noexcept {
      if (item == nullptr) return *this;
      item = item->getNext();
      if (item == nullptr) {
        ++index;
        findHead();
      }
      return *this;
    }

   private:
    void findHead() noexcept {
      while (index < table->size && table->buckets[index] == nullptr) ++index;
      if (index < table->size) item = table->buckets[index];
    }

    const XelEnvHashTable* table;
    Item* item = nullptr;
    long index = -1;
  };

  // An empty table of size buckets, size > 0. Throws std::bad_alloc.
  XelEnvHashTable(XelEnv environment, HashFunction hashFunction, CompareFunction compareFunction, long bucketCount)
      : XelEnvObjectI(environment), size(bucketCount), hash(hashFunction), compare(compareFunction) {
    create();
  }

  ~XelEnvHashTable() override { clear(); }

  // Makes the buckets when there are none. Throws std::bad_alloc.
  void create() {
    if (buckets == nullptr) buckets = makeBuckets(size).release();
  }

  // 0 when added; 2 when an equal key is present, whose value stays. Every throw leaves the items as they were.
  // Throws XelWrongUsage when the hash function returns a bad index, std::bad_alloc.
  long add(K key, V value) {
    create();
    const long index = getIndex(key, size);
    if (findIn(index, key) != nullptr) return 2;
    XelEnvBlock<Item> block(env, 1);
    Item* item = new (block.get()) Item;
    item->setKey(key);
    item->setValue(value);
    item->setNext(buckets[index]);
    buckets[index] = item;
    ++count;
    if (count > 2 * size) {
      try {
        reMod(2 * size);
      } catch (...) {
        buckets[index] = item->getNext();
        --count;
        throw;
      }
    }
    block.release();
    return 0;
  }

  // 0 and the value when the key is found; 1 when it is not, or the table has no buckets.
  // Throws XelWrongUsage when the hash function returns a bad index.
  long find(K key, V& value) const {
    const Item* item = findItem(key);
    if (item == nullptr) return 1;
    value = item->getValue();
    return 0;
  }

  // The entry of a key, null when there is none.
  // Throws XelWrongUsage when the hash function returns a bad index.
  const Item* findItem(K key) const { return buckets == nullptr ? nullptr : findIn(getIndex(key, size), key); }

  // Gives the key the new value: 0 when it is found, else 1. The old value is not looked at.
  // Throws XelWrongUsage when the hash function returns a bad index, std::bad_alloc.
  long move(K key, V /*oldValue*/, V newValue) {
    create();
    Item* item = findIn(getIndex(key, size), key);
    if (item == nullptr) return 1;
    item->setValue(newValue);
    return 0;
  }

  // Spreads the items over newSize buckets, newSize > 0. Items that stay together in a bucket change their order.
  // Every throw leaves the table as it was. Throws XelWrongUsage when the hash function returns a bad index,
  // std::bad_alloc.
  void reMod(long newSize) {
    XelEnvBlock<Item*> newBuckets = makeBuckets(newSize);
    if (buckets != nullptr) {
      // Asked once before anything moves, so that a bad index loses no item.
      for (long index = 0; index < size; ++index) {
        for (Item* item = buckets[index]; item != nullptr; item = item->getNext()) getIndex(item->getKey(), newSize);
      }
      for (long index = 0; index < size; ++index) {
        Item* item = buckets[index];
        while (item != nullptr) {
          Item* next = item->getNext();
          Item*& head = newBuckets[getIndex(item->getKey(), newSize)];
          item->setNext(head);
          head = item;
          item = next;
        }
      }
    }
    XelEnvBlock<Item*> former(env, buckets, size);
    buckets = newBuckets.release();
    size = newSize;
  }

  // No item and no bucket is left; the size stays, and a later add() makes the buckets again.
  void clear() noexcept {
    if (buckets == nullptr) return;
    for (long index = 0; count > 0; ++index) {
      Item* item = buckets[index];
      while (item != nullptr) {
        Item* next = item->getNext();
        XelFree(env, item);
        --count;
        item = next;
      }
    }
    XelFree(env, buckets, size);
    buckets = nullptr;
  }

  // Exchanges everything with another table, the environments too.
  void swap(XelEnvHashTable& other) noexcept {
    std::swap(env, other.env);
    std::swap(count, other.count);
    std::swap(size, other.size);
    std::swap(hash, other.hash);
    std::swap(compare, other.compare);
    std::swap(buckets, other.buckets);
  }

  long getCount() const noexcept { return count; }
  long getSize() const noexcept { return size; }

  // Whether the table has buckets.
  bool hasBuckets() const noexcept { return buckets != nullptr; }

 private:
  XelEnvBlock<Item*> makeBuckets(long number) const {
    XelEnvBlock<Item*> made(env, number);
    for (long index = 0; index < number; ++index) made[index] = nullptr;
    return made;
  }

  long getIndex(K key, long number) const {
    const long index = hash(key, number);
    if (index < 0 || index >= number) throw XelWrongUsage("Hash function returned bad index", 0);
    return index;
  }

  Item* findIn(long index, K key) const {
    Item* item = buckets[index];
    while (item != nullptr && compare(item->getKey(), key) == 0) item = item->getNext();
    return item;
  }

  long count = 0;
  long size;
  HashFunction hash;
  CompareFunction compare;
  Item** buckets = nullptr;
};
