#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvane {

namespace detail {

// Connection side of an event, shared between the event and its connections so that
// either may go first.
class EventSlotBase {
 public:
  virtual ~EventSlotBase() = default;
  bool connected = true;
};

class EventStateBase {
 public:
  virtual ~EventStateBase() = default;
  virtual void Remove(const EventSlotBase* slot) = 0;
};

}  // namespace detail

/// An RAII handle on one handler of an Event: destroying it (or Disconnect) removes the
/// handler. Move-only; a default-constructed Connection is empty.
class Connection {
 public:
  Connection() = default;
  ~Connection() { Disconnect(); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  Connection(Connection&& other) noexcept
      : state_(std::move(other.state_)), slot_(std::move(other.slot_)) {}
  Connection& operator=(Connection&& other) noexcept {
    if (this != &other) {
      Disconnect();
      state_ = std::move(other.state_);
      slot_ = std::move(other.slot_);
    }
    return *this;
  }

  /// Removes the handler; later raises no longer call it. Safe to call twice.
  void Disconnect() noexcept {
    if (auto slot = slot_.lock()) {
      slot->connected = false;
      if (auto state = state_.lock()) state->Remove(slot.get());
    }
    state_.reset();
    slot_.reset();
  }

  /// True while the handler is attached to a living event.
  bool Connected() const noexcept {
    auto slot = slot_.lock();
    return slot && slot->connected && !state_.expired();
  }

 private:
  template <class... Args>
  friend class Event;
  Connection(std::weak_ptr<detail::EventStateBase> state,
             std::weak_ptr<detail::EventSlotBase> slot)
      : state_(std::move(state)), slot_(std::move(slot)) {}

  std::weak_ptr<detail::EventStateBase> state_;
  std::weak_ptr<detail::EventSlotBase> slot_;
};

/// A multicast event: handlers run in the order they were connected. A handler that is
/// disconnected during a raise is not called afterwards; one connected during a raise
/// first runs at the next raise. Exceptions from a handler propagate to the raiser.
template <class... Args>
class Event {
 public:
  using Handler = std::function<void(Args...)>;

  Event() : state_(std::make_shared<State>()) {}
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  /// Attaches a handler; it stays attached as long as the returned Connection lives.
  [[nodiscard]] Connection Connect(Handler handler) {
    auto slot = std::make_shared<Slot>(std::move(handler));
    state_->handlers.push_back(slot);
    return Connection(std::weak_ptr<detail::EventStateBase>(state_),
                      std::weak_ptr<detail::EventSlotBase>(slot));
  }

  /// Calls every connected handler with the arguments, in connection order.
  void Raise(Args... args) const {
    const std::shared_ptr<State> state = state_;  // the event may die inside a handler
    ++state->raising;
    struct Done {
      State& s;
      ~Done() {
        if (--s.raising == 0) s.Compact();
      }
    } done{*state};
    const std::size_t count = state->handlers.size();
    for (std::size_t i = 0; i < count; ++i) {
      const std::shared_ptr<Slot> slot = state->handlers[i];
      if (slot->connected) slot->handler(args...);
    }
  }

  /// Number of handlers attached.
  std::size_t ConnectionCount() const noexcept {
    std::size_t n = 0;
    for (const auto& slot : state_->handlers) if (slot->connected) ++n;
    return n;
  }

 private:
  struct Slot : detail::EventSlotBase {
    explicit Slot(Handler h) : handler(std::move(h)) {}
    Handler handler;
  };
  struct State : detail::EventStateBase {
    std::vector<std::shared_ptr<Slot>> handlers;  // not "slots": Qt defines that as a macro
    int raising = 0;
    void Remove(const detail::EventSlotBase*) override {
      if (raising == 0) Compact();  // during a raise the slot is only marked
    }
    void Compact() {
      std::erase_if(handlers, [](const std::shared_ptr<Slot>& s) { return !s->connected; });
    }
  };

  std::shared_ptr<State> state_;
};

}  // namespace orvane
