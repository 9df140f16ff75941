#include "testing/exchange_record.h"

#include <utility>

namespace world {

size_t ExchangeRecord::add(Exchange exchange) {
    const std::lock_guard<std::mutex> lock(guard_);
    exchange.started = now();
    exchanges_.push_back(std::move(exchange));
    return taken_ + exchanges_.size() - 1;
}

void ExchangeRecord::change(size_t number, const std::function<void(Exchange &)> &edit) {
    const std::lock_guard<std::mutex> lock(guard_);
    if (number >= taken_)
        edit(exchanges_.at(number - taken_));
}

std::vector<Exchange> ExchangeRecord::all() const {
    const std::lock_guard<std::mutex> lock(guard_);
    return exchanges_;
}

std::vector<Exchange> ExchangeRecord::take() {
    const std::lock_guard<std::mutex> lock(guard_);
    taken_ += exchanges_.size();
    return std::exchange(exchanges_, {});
}

double ExchangeRecord::now() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

}  // namespace world
