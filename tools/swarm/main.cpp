#include <cstdio>
#include <exception>
#include <sys/resource.h>

#include <QCoreApplication>

#include "tools/swarm/runs.h"
#include "tools/swarm/tls_tunnel.h"

namespace corvane::swarm {
namespace {

// Each player needs a descriptor.
void RaiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

// Returns the program's exit code.
template <typename Result>
int Print(const Result& result) {
  std::printf("%s\n%s\n", result.ToText().c_str(), result.ToJson().c_str());
  return result.IsGood() ? 0 : 1;
}

int Run(const Options& options) {
  RaiseDescriptorLimit();
  // Flushes each line, into a pipe too.
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  switch (options.mode) {
    case Mode::Demo:
      return RunDemo(options);
    case Mode::Churn:
      return Print(RunChurn(options));
    case Mode::Rush:
      return Print(RunRush(options));
    case Mode::Hostile:
    case Mode::Fanout:
    case Mode::Rate:
    case Mode::Idle:
      break;
  }
  return Print(RunMeasured(options));
}

int Main(int argumentCount, char** arguments) {
  const QCoreApplication application(argumentCount, arguments);
  const ParsedOptions parsed = ParseOptions(QCoreApplication::arguments());
  if (!parsed.options) {
    std::fputs(parsed.text.c_str(), parsed.exitCode == 0 ? stdout : stderr);
    return parsed.exitCode;
  }
  try {
    Options options = *parsed.options;
    std::optional<TlsTunnel> tunnel;
    if (options.tls) {
      tunnel.emplace(options.server, *options.tls);
      options.server = tunnel->Address();
    }
    return Run(options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "corvane-swarm: %s\n", error.what());
    return 1;
  }
}

}  // namespace
}  // namespace corvane::swarm

int main(int argumentCount, char** arguments) {
  return corvane::swarm::Main(argumentCount, arguments);
}
