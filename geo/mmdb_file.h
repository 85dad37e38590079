#pragma once

#include <memory>
#include <string>

#include <QString>

#include "geo/client_location.h"

struct MMDB_s;

namespace corvane {

// An open mmdb file: a tree of address ranges with a record for each
// (https://maxmind.github.io/MaxMind-DB/). Reads files of cities and of countries, with nested
// records ("country", in it "names", in it "en") or flat ones ("country_code", "city"). Invalid
// data give no location and do no harm. The file is mapped into memory, so it must not shrink or
// change while it is open.
class MmdbFile {
 public:
  explicit MmdbFile(const QString& file);

  // Why lookups are impossible; empty if they are possible.
  const std::string& Fault() const { return myFault; }
  // The date of the file's data, "YYYY-MM-DD".
  std::string Date() const;

  // Sets the fields that the file has for the address and leaves the others. Texts are cut at 256
  // bytes. A region is given by its code if it has one, a time zone by its present offset from UTC
  // in hours. Returns what is wrong with the file, or nothing.
  std::string Find(const std::string& address, ClientLocation& location) const;

 private:
  struct Closing {
    void operator()(MMDB_s* database) const;
  };

  std::unique_ptr<MMDB_s, Closing> myDatabase;
  std::string myFault;
};

}  // namespace corvane
