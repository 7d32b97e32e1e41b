// A reference to a callable: what a routine takes when it calls back into its caller.
//
// Unlike std::function it owns nothing and takes no memory, so it may be made in every step; it
// must not outlive the call it is handed to.
#pragma once

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>

namespace frame {

template <class Signature>
class FunctionRef;

template <class Result, class... Args>
class FunctionRef<Result(Args...)> {
 public:
  template <class Callable>
  requires(!std::same_as<std::remove_cvref_t<Callable>, FunctionRef>)
      FunctionRef(Callable&& callable)  // NOLINT(bugprone-forwarding-reference-overload)
      : object_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
        call_([](void* object, Args... args) -> Result {
          return (*static_cast<std::remove_reference_t<Callable>*>(object))(
              std::forward<Args>(args)...);
        }) {}

  Result operator()(Args... args) const { return call_(object_, std::forward<Args>(args)...); }

 private:
  void* object_;
  Result (*call_)(void*, Args...);
};

}  // namespace frame
