// A proxy that only answers as its script says, and connects nobody.
#pragma once

#include <vector>

#include "testing/daemon.h"
#include "testing/service.h"

namespace world {

class FakeProxy : public Service {
  public:
    // On 127.0.0.1:3128.
    FakeProxy(ExchangeRecord &record, const std::vector<ScriptedReply> &replies)
        : Service("proxy", record, {{"*", replies}}), server_("127.0.0.1", kProxyPort, *this) {}

  protected:
    std::string endpoint_of(const Request &) override { return "*"; }
    std::string part_of(const std::string &) override { return name_; }
    std::string origin_of(const Request &) override { return ""; }
    Reply own_answer(Request &, const std::string &, const std::string &) override {
        return status_reply(502);
    }

  private:
    HttpServer server_;
};

}  // namespace world
