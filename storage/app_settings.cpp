#include "storage/app_settings.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <system_error>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <libxml/xmlerror.h>

#include "framework/text.h"
#include "framework/xml_document.h"
#include "platform/standard_error.h"
#include "storage/replace_file.h"

namespace corvane {

namespace {

constexpr qint64 kMaxFileSize = qint64{16} << 20;  // bytes

const QString kBroken = QStringLiteral(".broken");

struct XMLTextEnd {
  void operator()(xmlChar* text) const { xmlFree(text); }
};

// The text with characters replaced that XML cannot hold, not even escaped: most controls.
std::string Writable(std::string_view text) {
  QString writable = DisplayText(text);
  for (QChar& unit : writable) {
    const char16_t code = unit.unicode();
    const bool isControl = code < u' ' && code != u'\t' && code != u'\n' && code != u'\r';
    if (isControl || code >= 0xFFFE) unit = QChar::ReplacementCharacter;
  }
  return TextFromDisplay(writable);
}

std::string Attribute(const xmlNode* element, const char* name) {
  const std::unique_ptr<xmlChar, XMLTextEnd> value(xmlGetNoNsProp(element, AsXML(name)));
  return value ? reinterpret_cast<const char*>(value.get()) : "";
}

// None, and the reason in `fault`, if it cannot be read.
XMLDocument ReadDocument(const QString& fileName, std::string& fault) {
  QFile file(fileName);
  // Other files, such as a pipe, may never end.
  if (!QFileInfo(fileName).isFile()) {
    fault = "not a regular file";
    return nullptr;
  }
  if (!file.open(QIODevice::ReadOnly)) {
    fault = TextFromDisplay(file.errorString());
    return nullptr;
  }
  const QByteArray bytes = file.read(kMaxFileSize + 1);
  if (bytes.size() > kMaxFileSize) {
    fault = "more than 16 MiB";
    return nullptr;
  }
  XMLDocument document = ParseXML({bytes.constData(), static_cast<std::size_t>(bytes.size())});
  if (document) return document;
  const xmlError* const error = xmlGetLastError();
  fault = "not well-formed";
  if (error != nullptr) fault += " in line " + std::to_string(error->line);
  return nullptr;
}

}  // namespace

AppSettings::AppSettings(std::optional<QString> folder) {
  if (folder) myFile = QDir(*folder).absoluteFilePath(QStringLiteral("Corvane Server.xml"));
}

void AppSettings::Load() {
  myValues.clear();
  if (!myFile) return;
  // Nothing reads "Port"; the listener's port is another entry. This is deliberate.
  if (!QFileInfo::exists(*myFile) && !SetValue("Port", "12000")) return;
  std::string fault;
  const XMLDocument document = ReadDocument(*myFile, fault);
  myIsFileBroken = document == nullptr;
  if (myIsFileBroken) {
    return ReportFault("cannot be read: " + fault +
                       "; defaults apply, and the file will be kept as " +
                       TextFromDisplay(*myFile + kBroken) + " before it is replaced");
  }
  const xmlNode* const root = xmlDocGetRootElement(document.get());
  for (const xmlNode* node = root->children; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE) continue;
    Keep(Attribute(node, "namestring"), Attribute(node, "valuestring"));
  }
}

bool AppSettings::Save() {
  mySaveError = Write();
  if (mySaveError.empty()) return true;
  ReportFault("not saved: " + mySaveError);
  return false;
}

std::string AppSettings::Write() {
  if (!myFile) return "there is no folder for it";
  const XMLDocument document(xmlNewDoc(AsXML("1.0")));
  xmlNode* const root = xmlNewDocNode(document.get(), nullptr, AsXML("settings"), nullptr);
  xmlDocSetRootElement(document.get(), root);
  for (const auto& [name, value] : myValues) {
    xmlNode* const entry = xmlNewChild(root, nullptr, AsXML("setting"), nullptr);
    xmlNewProp(entry, AsXML("namestring"), AsXML(Writable(name).c_str()));
    xmlNewProp(entry, AsXML("valuestring"), AsXML(Writable(value).c_str()));
  }
  xmlChar* dumped = nullptr;
  int size = 0;
  xmlDocDumpFormatMemoryEnc(document.get(), &dumped, &size, "UTF-8", 1);
  const std::unique_ptr<xmlChar, XMLTextEnd> bytes(dumped);
  if (!bytes) return "no memory";
  const QFileInfo file(*myFile);
  QDir().mkpath(file.absolutePath());
  const std::filesystem::path path = file.filesystemFilePath();
  const std::filesystem::path broken = QFileInfo(*myFile + kBroken).filesystemFilePath();
  std::error_code error;
  if (myIsFileBroken && file.exists()) std::filesystem::rename(path, broken, error);
  if (error) return error.message();
  const QString fault = ReplaceFile(*myFile, QByteArrayView(bytes.get(), size));
  if (fault.isEmpty()) {
    myIsFileBroken = false;
  } else if (myIsFileBroken) {
    std::filesystem::rename(broken, path, error);
  }
  return TextFromDisplay(fault);
}

void AppSettings::ReportFault(const std::string& fault) const {
  const std::string line =
      "settings: " + (myFile ? TextFromDisplay(*myFile) + ": " : std::string()) + fault;
  WriteErrorLine(line);
  if (FaultReported) FaultReported(line);
}

std::string AppSettings::GetValue(std::string_view name, std::string_view defaultValue) {
  if (const std::string* const value = Find(name)) return *value;
  Keep(name, defaultValue);
  return std::string(defaultValue);
}

bool AppSettings::SetValue(std::string_view name, std::string_view value) {
  const auto before = myValues;
  Keep(name, value);
  if (Save()) return true;
  myValues = before;
  return false;
}

std::string* AppSettings::Find(std::string_view name) {
  const auto found = std::ranges::find_if(
      myValues, [name](const auto& entry) { return SameText(entry.first, name); });
  return found == myValues.end() ? nullptr : &found->second;
}

void AppSettings::Keep(std::string_view name, std::string_view value) {
  if (std::string* const kept = Find(name)) {
    *kept = value;
  } else {
    myValues.emplace_back(name, value);
  }
}

}  // namespace corvane
