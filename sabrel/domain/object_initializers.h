// The host's objects that load their state from the database, so that they can be asked at once to
// load it.
//
// Objects are registered, once or more often, and stay registered; the host calls `Initialize` on
// the collection after a login or a change of connection, the component never does. One collection
// serves each thread.
//
//   GSabrel::RegisterDBObjectInitializer(std::make_shared<EntityCache>());
//   GSabrel::DBObjectInitializers()->Initialize();
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <vector>

namespace sabrel {

class IDBObjectInitializer {
 public:
  virtual ~IDBObjectInitializer() = default;
  /// Loads or reloads the object's state; does nothing by itself.
  virtual void Initialize() {}
};

class CDBObjectInitializers;

namespace MSabrel {

/// Appends `dboi` to the thread's collection. Errors: 13 when it is no object. Cost: no round trip
void RegisterDBObjectInitializer(const std::shared_ptr<IDBObjectInitializer>& dboi);

/// The thread's collection, always the same. Cost: no round trip
[[nodiscard]] std::shared_ptr<CDBObjectInitializers> DBObjectInitializers();

}  // namespace MSabrel

class CDBObjectInitializers {
 public:
  using Entry = std::shared_ptr<IDBObjectInitializer>;

  /// Walks the entries in the order of registration, also those that are registered on the way.
  class Iterator {
   public:
    using difference_type = std::ptrdiff_t;
    using value_type = Entry;

    Iterator() = default;
    explicit Iterator(const std::vector<Entry>& entries) : entries_(&entries) {}
    [[nodiscard]] Entry operator*() const { return (*entries_)[position_]; }
    Iterator& operator++() {
      ++position_;
      return *this;
    }
    void operator++(int) { ++position_; }
    [[nodiscard]] bool operator==(std::default_sentinel_t) const {
      return position_ >= entries_->size();
    }

   private:
    const std::vector<Entry>* entries_ = nullptr;
    std::size_t position_ = 0;
  };

  /// Calls `Initialize` of each entry, of one registered twice two times.
  /// Errors: what an entry raises, which ends the walk
  void Initialize();

  [[nodiscard]] Iterator begin() const { return Iterator(entries_); }
  [[nodiscard]] static std::default_sentinel_t end() { return {}; }

 private:
  friend void MSabrel::RegisterDBObjectInitializer(const Entry& dboi);
  void Add(const Entry& dboi) { entries_.push_back(dboi); }

  std::vector<Entry> entries_;
};

}  // namespace sabrel
