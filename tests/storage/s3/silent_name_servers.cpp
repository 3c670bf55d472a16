// Preloaded into a program: every look-up of a host name takes a minute, as if no name server responded.
#include <netdb.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int getaddrinfo(char const* /*host*/, char const* /*service*/,
                                                                  addrinfo const* /*hints*/, addrinfo** /*result*/) {
  ::sleep(60);
  return EAI_AGAIN;
}
