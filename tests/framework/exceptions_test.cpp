#include "framework/exceptions.h"

#include <new>

#include <gtest/gtest.h>

namespace corvane {
namespace {

struct ForeignError {};

TEST(Exceptions, EachIsReportedUnderItsOwnName) {
  EXPECT_EQ(ClassNameOf(std::make_exception_ptr(RuntimeException("misuse"))), "RuntimeException");
  EXPECT_EQ(ClassNameOf(std::make_exception_ptr(NilObjectException())), "NilObjectException");
  EXPECT_EQ(ClassNameOf(std::make_exception_ptr(std::bad_array_new_length())),
            "OutOfMemoryException");
  EXPECT_EQ(ClassNameOf(std::make_exception_ptr(std::out_of_range("far"))), "std::out_of_range");
  EXPECT_EQ(ClassNameOf(std::make_exception_ptr(ForeignError())),
            "corvane::(anonymous namespace)::ForeignError");
  EXPECT_EQ(ClassNameOf(std::make_exception_ptr(7)), "int");
  EXPECT_EQ(ClassNameOf(nullptr), "");
}

}  // namespace
}  // namespace corvane
