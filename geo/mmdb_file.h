#pragma once

#include <memory>
#include <string>

#include <QString>

#include "geo/client_location.h"

struct MMDB_s;

namespace corvane {

// An open mmdb file: a tree of address ranges with what is known of each, as
// https://maxmind.github.io/MaxMind-DB/ describes it. Files of cities and of countries are
// understood, whether their records are nested ("country", in it "names", in it "en") or flat
// ("country_code", "city"). Bytes that make no sense give no location and do no harm; but the file
// is mapped into memory, so it must neither shrink nor change while it is open.
class MmdbFile {
 public:
  explicit MmdbFile(const QString& file);

  // Why nothing can be looked up; empty where it can.
  const std::string& Fault() const { return myFault; }
  // Of the file's data: "YYYY-MM-DD".
  std::string Date() const;

  // Sets what the file says of the dotted IPv4 address and leaves the rest. Texts are kept up to
  // 256 bytes; a region is its code where there is one, a time zone the hours that it is ahead of
  // Greenwich now. The result tells what is wrong with the file, if anything.
  std::string Find(const std::string& address, ClientLocation& location) const;

 private:
  struct Closing {
    void operator()(MMDB_s* database) const;
  };

  std::unique_ptr<MMDB_s, Closing> myDatabase;
  std::string myFault;
};

}  // namespace corvane
