#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace quibel {

/// Tells observers that a property is about to change. Main thread only.
class ChangeAnnouncer {
  using Observers = std::map<std::uint64_t, std::function<void()>>;

 public:
  /// Keeps an observer subscribed for as long as it lives. It may outlive the announcer.
  class Subscription {
   public:
    Subscription() = default;
    Subscription(Subscription&& other) noexcept { *this = std::move(other); }
    Subscription& operator=(Subscription&& other) noexcept {
      std::swap(observers_, other.observers_);
      std::swap(id_, other.id_);
      return *this;
    }
    ~Subscription() {
      if (const auto observers = observers_.lock()) observers->erase(id_);
    }

   private:
    friend class ChangeAnnouncer;
    Subscription(std::weak_ptr<Observers> observers, std::uint64_t id)
        : observers_(std::move(observers)), id_(id) {}

    std::weak_ptr<Observers> observers_;
    std::uint64_t id_ = 0;
  };

  /// `observer` runs before each change, when every property still has its old
  /// value. It must neither subscribe nor unsubscribe from inside.
  [[nodiscard]] Subscription subscribe(std::function<void()> observer) {
    const auto id = nextId_++;
    observers_->emplace(id, std::move(observer));
    return {observers_, id};
  }

  void announce() const {
    for (const auto& [id, observer] : *observers_) observer();
  }

 private:
  std::shared_ptr<Observers> observers_ = std::make_shared<Observers>();
  std::uint64_t nextId_ = 1;
};

/// A property whose every assignment announces a change and only then stores,
/// whether or not the value differs.
template <class T>
class Published {
 public:
  Published(const ChangeAnnouncer& announcer, T initialValue)
      : announcer_(announcer), value_(std::move(initialValue)) {}
  Published(const Published&) = delete;

  Published& operator=(const Published&) = delete;
  Published& operator=(T value) {
    announcer_.announce();
    value_ = std::move(value);
    return *this;
  }

  const T& get() const { return value_; }
  operator const T&() const { return value_; }

 private:
  const ChangeAnnouncer& announcer_;
  T value_;
};

/// Two-way access to one published property, for a view that edits it. The
/// property must outlive the binding.
template <class T>
class Binding {
 public:
  explicit Binding(Published<T>& property) : property_(&property) {}

  T get() const { return property_->get(); }
  void set(T value) const { *property_ = std::move(value); }

 private:
  Published<T>* property_;
};

}  // namespace quibel
