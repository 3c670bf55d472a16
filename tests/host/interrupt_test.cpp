#include <csignal>
#include <thread>

#include <gtest/gtest.h>

#include "interrupt/interrupt_exception.hpp"
#include "interrupt/interrupt_state.hpp"

namespace {

TEST(Interrupt, SetInASignalHandlerIsThrownOnlyWhereTheModeSaysSo) {
  auto* const previous = std::signal(SIGUSR1, [](int) { utSetInterruptPending(true); });
  EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
  std::raise(SIGUSR1);
  std::signal(SIGUSR1, previous);
  ASSERT_TRUE(utIsInterruptPending());
  {
    utInterruptMode const off(utInterruptMode::off);
    EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
    {
      utInterruptMode const on(utInterruptMode::on);
      EXPECT_THROW(utInterruptState::ThrowIfInterruptPending(), Quindarel::System::InterruptException);
    }
    EXPECT_EQ(utInterruptMode::current(), utInterruptMode::off);
    std::thread([] { EXPECT_EQ(utInterruptMode::current(), utInterruptMode::on); }).join();
  }
  EXPECT_THROW(utInterruptState::ThrowIfInterruptPending(), Quindarel::System::InterruptException);
  EXPECT_TRUE(utIsInterruptPending());
  utSetInterruptPending(false);
  EXPECT_NO_THROW(utInterruptState::ThrowIfInterruptPending());
}

}  // namespace
