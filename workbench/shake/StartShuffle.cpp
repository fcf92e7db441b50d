#include "workbench/shake/StartShuffle.h"

namespace {

/// The last steps of SplitMix64: each bit of the result depends on each bit of `number`.
std::uint64_t Mixed(std::uint64_t number) {
  number = (number ^ (number >> 30U)) * 0xBF58476D1CE4E5B9U;
  number = (number ^ (number >> 27U)) * 0x94D049BB133111EBU;
  return number ^ (number >> 31U);
}

/// FNV-1a, 64 bits.
std::uint64_t TextHash(const std::string& text) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  }
  return hash;
}

}  // namespace

std::uint64_t SeededHash(std::uint64_t seed, const std::string& text) {
  constexpr std::uint64_t step = 0x9E3779B97F4A7C15U;
  return Mixed(TextHash(text) ^ Mixed((seed + 1) * step));
}

std::int64_t ShuffledDelay(std::uint64_t seed, const std::string& plugin, std::int64_t longest) {
  const std::uint64_t hash = SeededHash(seed / 2, plugin);
  const std::uint64_t high = hash >> 32U;  // so that the product fits
  const auto delay = static_cast<std::int64_t>((high * static_cast<std::uint64_t>(longest)) >> 32U);
  return seed % 2 == 0 ? delay : longest - 1 - delay;
}
