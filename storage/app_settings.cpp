#include "storage/app_settings.h"

#include <algorithm>
#include <memory>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "framework/replace_file.h"
#include "framework/text.h"
#include "framework/xml_document.h"

namespace corvane {

namespace {

constexpr qint64 kMaxFileSize = qint64{16} << 20;  // bytes

// What the file can hold of a text: XML has no control characters, not even escaped ones.
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
  struct TextEnd {
    void operator()(xmlChar* text) const { xmlFree(text); }
  };
  const std::unique_ptr<xmlChar, TextEnd> value(xmlGetNoNsProp(element, AsXML(name)));
  return value ? reinterpret_cast<const char*>(value.get()) : "";
}

XMLDocument ReadDocument(const QString& fileName) {
  QFile file(fileName);
  // Anything but a plain file (a pipe, say) might never give an end.
  if (!QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly)) return nullptr;
  const QByteArray bytes = file.read(kMaxFileSize + 1);
  if (bytes.size() > kMaxFileSize) return nullptr;
  return ParseXML({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

}  // namespace

AppSettings::AppSettings(std::optional<QString> folder) {
  if (folder) myFile = QDir(*folder).absoluteFilePath(QStringLiteral("Corvane Server.xml"));
}

void AppSettings::Load() {
  myValues.clear();
  if (!myFile) return;
  // Nothing ever reads "Port", the listener's port is another entry: this is deliberate.
  if (!QFileInfo::exists(*myFile)) SetValue("Port", "12000");
  const XMLDocument document = ReadDocument(*myFile);
  const xmlNode* const root = xmlDocGetRootElement(document.get());
  if (root == nullptr) return;
  for (const xmlNode* node = root->children; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE) continue;
    Keep(Attribute(node, "namestring"), Attribute(node, "valuestring"));
  }
}

void AppSettings::Save() {
  if (!myFile) return;
  const XMLDocument document(xmlNewDoc(AsXML("1.0")));
  xmlNode* const root = xmlNewDocNode(document.get(), nullptr, AsXML("settings"), nullptr);
  xmlDocSetRootElement(document.get(), root);
  for (const auto& [name, value] : myValues) {
    xmlNode* const entry = xmlNewChild(root, nullptr, AsXML("setting"), nullptr);
    xmlNewProp(entry, AsXML("namestring"), AsXML(Writable(name).c_str()));
    xmlNewProp(entry, AsXML("valuestring"), AsXML(Writable(value).c_str()));
  }
  xmlChar* bytes = nullptr;
  int size = 0;
  xmlDocDumpFormatMemoryEnc(document.get(), &bytes, &size, "UTF-8", 1);
  if (bytes == nullptr) return;
  QDir().mkpath(QFileInfo(*myFile).absolutePath());
  ReplaceFile(*myFile, QByteArrayView(bytes, size));
  xmlFree(bytes);
}

std::string AppSettings::GetValue(std::string_view name, std::string_view defaultValue) {
  if (const std::string* const value = Find(name)) return *value;
  Keep(name, defaultValue);
  return std::string(defaultValue);
}

void AppSettings::SetValue(std::string_view name, std::string_view value) {
  Keep(name, value);
  Save();
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
