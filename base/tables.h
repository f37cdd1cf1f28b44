// What tables are checked for while compiling.
#pragma once

#include <cstddef>

namespace tesk {

// Whether row i of a table is that of the enumerator i.
template <class Row, std::size_t kCount, class Key>
consteval bool InOrder(const Row (&rows)[kCount], Key Row::*key) {
  std::size_t next = 0;
  for (const Row& row : rows) {
    if (static_cast<std::size_t>(row.*key) != next++) return false;
  }
  return true;
}

}  // namespace tesk
