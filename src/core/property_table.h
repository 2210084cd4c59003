#pragma once

// Properties of the public objects, each described once.
//
// Every public object treats its plain properties alike: a let compares with the stored
// value and does nothing when it is unchanged, otherwise checks the value (raising
// orvane::Error and keeping the old one), stores it and raises PropertyChanged with the
// property's name; WriteProperties writes each value under the caller's key prefix;
// ReadProperties reads every value with its default and checks them all before it
// applies any, each through its let.
//
// An object describes each property once as a Property (name, member, default, check)
// and lists its properties and owned sub-objects (SubObject: a line, marker or font kept
// under a key prefix) in the order they are stored; WriteAll and ReadAll walk that list.
// What the stored format does unusually is said on the descriptor:
//   .Key("BI")         stored under another key than the name it raises
//   .ReadKey("1")      read back from another key than the one it is written to
//   .Bare()            stored without the caller's prefix
//   .IgnoredWhile(&F)  the let does nothing while the owner's F() is true (master rules)
//   .Then(&F)          the owner's F() runs after a value is stored, before the event
//
// Internal header: no compatibility promise.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "orvane/core/color.h"
#include "orvane/core/property_bag.h"

namespace orvane::detail {

// The bag type a value is stored as: colours and enumerations as Longs, the rest as is.
template <class T>
using StoredType =
    std::conditional_t<std::is_enum_v<T> || std::is_same_v<T, Color>, std::int32_t, T>;

// Writes one value under key in its stored type (a colour keeps its bit pattern).
template <class T>
void WriteValue(PropertyBag& bag, const std::string& key, const T& value) {
  bag.WriteProperty(key, static_cast<StoredType<T>>(value));
}

// Reads one value under key, fallback when absent; conversion errors pass through.
template <class T>
T ReadValue(const PropertyBag& bag, const std::string& key, const T& fallback) {
  return static_cast<T>(bag.ReadProperty(key, static_cast<StoredType<T>>(fallback)));
}

// One persisted property of Owner held in a data member of type T. Owner raises
// PropertyChanged(const std::string&).
template <class Owner, class T>
class Property {
 public:
  // Raises orvane::Error for a refused value; name is the property's name.
  using Check = void (*)(const T& value, const char* name);
  using Staged = T;

  constexpr Property(const char* name, T Owner::*field, T fallback, Check check = nullptr)
      : name_(name), key_(name), readKey_(name), field_(field), fallback_(std::move(fallback)),
        check_(check) {}

  // Stored under key (written and read) instead of the name.
  constexpr Property Key(const char* key) const {
    Property p = *this;
    p.key_ = p.readKey_ = key;
    return p;
  }
  // Read back from key, still written under the name (or Key).
  constexpr Property ReadKey(const char* key) const {
    Property p = *this;
    p.readKey_ = key;
    return p;
  }
  // Stored without the caller's prefix.
  constexpr Property Bare() const {
    Property p = *this;
    p.bare_ = true;
    return p;
  }
  // The let does nothing while (owner.*ignored)() is true.
  constexpr Property IgnoredWhile(bool (Owner::*ignored)() const) const {
    Property p = *this;
    p.ignored_ = ignored;
    return p;
  }
  // (owner.*then)() runs after a value is stored, before the event.
  constexpr Property Then(void (Owner::*then)()) const {
    Property p = *this;
    p.then_ = then;
    return p;
  }

  constexpr const char* Name() const noexcept { return name_; }
  constexpr const T& Fallback() const noexcept { return fallback_; }

  // Raises the check's error, if any, for value.
  void Validate(const T& value) const {
    if (check_ != nullptr) check_(value, name_);
  }

  // The let: nothing when ignored or unchanged; otherwise check, store, then-hook and
  // PropertyChanged(name). True when the value was stored.
  bool Let(Owner& owner, const T& value) const {
    if (ignored_ != nullptr && (owner.*ignored_)()) return false;
    T& field = owner.*field_;
    if (field == value) return false;
    Validate(value);
    field = value;
    if (then_ != nullptr) (owner.*then_)();
    owner.PropertyChanged.Raise(name_);
    return true;
  }

  void Write(PropertyBag& bag, const std::string& prefix, const Owner& owner) const {
    WriteValue(bag, bare_ ? std::string(key_) : prefix + key_, owner.*field_);
  }
  // The stored value (or the default), checked.
  T Read(const PropertyBag& bag, const std::string& prefix, const Owner&) const {
    T value = ReadValue(bag, bare_ ? std::string(readKey_) : prefix + readKey_, fallback_);
    Validate(value);
    return value;
  }
  void Apply(Owner& owner, const T& value) const { Let(owner, value); }

 private:
  const char* name_;
  const char* key_;
  const char* readKey_;
  T Owner::*field_;
  T fallback_;
  Check check_;
  bool bare_ = false;
  bool (Owner::*ignored_)() const = nullptr;
  void (Owner::*then_)() = nullptr;
};

// An owned sub-object (Line, Marker, Font, ...) persisted under the caller's prefix
// followed by its own key prefix ("MeshLine.", or "Font" glued without a dot). Reading
// fills a scratch copy first, so a bad value is found before anything changes; applying
// copies the scratch in through CopyFrom, whose lets raise the sub-object's own events.
template <class Owner, class Sub>
class SubObject {
 public:
  using Staged = std::unique_ptr<Sub>;

  constexpr SubObject(const char* key, Sub Owner::*member) : key_(key), member_(member) {}

  void Write(PropertyBag& bag, const std::string& prefix, const Owner& owner) const {
    (owner.*member_).WriteProperties(bag, prefix + key_);
  }
  // A scratch copy of the sub-object (values the bag lacks default to the current ones
  // where the sub-object reads so, as fonts do) with the stored values read in.
  Staged Read(const PropertyBag& bag, const std::string& prefix, const Owner& owner) const {
    auto scratch = std::make_unique<Sub>();
    scratch->CopyFrom(owner.*member_);
    scratch->ReadProperties(bag, prefix + key_);
    return scratch;
  }
  void Apply(Owner& owner, const Staged& scratch) const { (owner.*member_).CopyFrom(*scratch); }

 private:
  const char* key_;
  Sub Owner::*member_;
};

// Writes every entry in order under prefix.
template <class Owner, class... Entries>
void WriteAll(PropertyBag& bag, const std::string& prefix, const Owner& owner,
              const std::tuple<Entries...>& entries) {
  std::apply([&](const Entries&... e) { (e.Write(bag, prefix, owner), ...); }, entries);
}

// The values of every entry read from the bag and checked, in order; nothing changes.
template <class Owner, class... Entries>
std::tuple<typename Entries::Staged...> StageAll(const PropertyBag& bag, const std::string& prefix,
                                                 const Owner& owner,
                                                 const std::tuple<Entries...>& entries) {
  return std::apply(
      [&](const Entries&... e) {
        // A braced list is evaluated left to right, so errors come in table order.
        return std::tuple<typename Entries::Staged...>{e.Read(bag, prefix, owner)...};
      },
      entries);
}

// Applies staged values through the lets, in order.
template <class Owner, class... Entries>
void ApplyAll(Owner& owner, const std::tuple<Entries...>& entries,
              const std::tuple<typename Entries::Staged...>& staged) {
  [&]<std::size_t... I>(std::index_sequence<I...>) {
    (std::get<I>(entries).Apply(owner, std::get<I>(staged)), ...);
  }(std::index_sequence_for<Entries...>{});
}

// Reads and checks every entry, then applies them all: a bad bag changes nothing.
template <class Owner, class... Entries>
void ReadAll(const PropertyBag& bag, const std::string& prefix, Owner& owner,
             const std::tuple<Entries...>& entries) {
  ApplyAll(owner, entries, StageAll(bag, prefix, owner, entries));
}

}  // namespace orvane::detail
