#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>

#include "fakes/temporary_folder.h"

namespace quirepress {
namespace {

// The tests of the registry leave the one of the user alone.
class OwnConfiguration : public testing::Environment {
public:
    void SetUp() override {
        m_folder = std::make_unique<TemporaryFolder>();
        setenv("XDG_CONFIG_HOME", m_folder->Path().c_str(), 1);
    }
    void TearDown() override { m_folder.reset(); }

private:
    std::unique_ptr<TemporaryFolder> m_folder;
};

[[maybe_unused]] testing::Environment* const g_ownConfiguration =
    testing::AddGlobalTestEnvironment(new OwnConfiguration);

}  // namespace
}  // namespace quirepress
