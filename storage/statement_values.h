#pragma once

namespace corvane {

// How values come into the statements on the tables.
enum class StatementValues {
  Pasted,  // into the texts as they stand, unescaped: deliberate, and a quote in one is code
  Bound    // as parameters, so that nothing in one is more than a value
};

}  // namespace corvane
