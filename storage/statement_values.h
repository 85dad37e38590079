#pragma once

namespace corvane {

// How values are put into statements.
enum class StatementValues {
  Pasted,  // into the text, unescaped: a value with a quote becomes code; this is deliberate
  Bound    // as parameters, which are never code
};

}  // namespace corvane
