#include "ui/qt_main_queue.h"

#include "support/main_queue_contract.h"

namespace corvetta {
namespace {

// Qt's loop carries the product's work while the interface runs: it owes the same as the poll loop.
INSTANTIATE_TYPED_TEST_SUITE_P(QtLoop, MainQueueContract, ::testing::Types<QtMainQueue>);

}  // namespace
}  // namespace corvetta
