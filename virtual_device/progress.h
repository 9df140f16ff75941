/* A progress line on the terminal during a large upload. */
#pragma once

#include <atomic>
#include <thread>

#include "testing/exchange_record.h"

namespace world {

class Progress {
  public:
    // Watches a record until it is destroyed; silent unless standard error is a terminal.
    explicit Progress(const ExchangeRecord &record);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

  private:
    void watch() const;

    const ExchangeRecord &record_;
    std::atomic<bool> done_{false};
    std::thread watcher_;
};

}  // namespace world
