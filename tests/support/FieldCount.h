#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

/// Stands for a field of any type. It is only named, never converted.
struct AnyField {
  template <typename Field>
  operator Field() const;
};

template <typename Record, std::size_t... I>
constexpr auto TakesFields(std::index_sequence<I...>)
    -> decltype(Record{((void)I, AnyField())...}, true) {
  return true;
}
template <typename Record>
constexpr bool TakesFields(...) {
  return false;
}

/// How many fields a struct has, each of its bases counted as one: as many as its initialiser
/// takes. Fields may be numbers, texts, containers and structs.
template <typename Record, std::size_t Most = 64>
constexpr std::size_t FieldCount() {
  static_assert(std::is_aggregate_v<Record>);
  static_assert(Most > 0);
  if constexpr (TakesFields<Record>(std::make_index_sequence<Most>())) {
    return Most;
  } else {
    return FieldCount<Record, Most - 1>();
  }
}
