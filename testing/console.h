/*
 * Collects what programs write to the world's /dev/console, on a background thread. Only one
 * Console may exist at a time.
 */
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace world {

class Console {
  public:
    // `arrived`, when given, sees each piece of text as it comes in, on the background thread or on
    // the one that calls text().
    explicit Console(std::function<void(std::string_view)> arrived = {});
    ~Console();
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    // Everything written before the call.
    std::string text();

    // The same without the time stamps that begin each line.
    std::string text_without_stamps();

    void clear();

  private:
    void collect();
    void take();

    std::function<void(std::string_view)> arrived_;
    std::mutex guard_;
    std::string text_;
    int fifo_;
    int stop_;
    std::thread collector_;
};

// Cuts every "[Mon Nov 16 06:57:51 2026]".
std::string without_stamps(const std::string &text);

}  // namespace world
