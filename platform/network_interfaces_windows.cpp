#include <vector>
#include <winsock2.h>
// It needs winsock2.h before it.
#include <iphlpapi.h>

#include <QByteArray>

#include "platform/network_interfaces.h"

namespace corvane {

std::vector<NetworkInterface> NetworkInterfaces() {
  std::vector<IP_ADAPTER_INFO> adapters;
  ULONG bytes = 0;
  ULONG result = ERROR_BUFFER_OVERFLOW;
  // Adapters may appear between the two calls.
  while ((result = GetAdaptersInfo(adapters.data(), &bytes)) == ERROR_BUFFER_OVERFLOW) {
    adapters.resize(bytes / sizeof(IP_ADAPTER_INFO) + 1);
    bytes = static_cast<ULONG>(adapters.size() * sizeof(IP_ADAPTER_INFO));
  }
  std::vector<NetworkInterface> interfaces;
  if (result != NO_ERROR) return interfaces;
  for (const IP_ADAPTER_INFO* adapter = adapters.data(); adapter != nullptr;
       adapter = adapter->Next) {
    const auto address = QByteArray::fromRawData(reinterpret_cast<const char*>(adapter->Address),
                                                 static_cast<int>(adapter->AddressLength));
    interfaces.push_back(
        {address.toHex(':').toUpper().toStdString(), adapter->IpAddressList.IpAddress.String});
  }
  return interfaces;
}

}  // namespace corvane
