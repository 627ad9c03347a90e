#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

namespace {

std::size_t s_allocationsLeft = 0;  // until one fails; 0: none does

}  // namespace

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"  // once inlined, free seems not to fit

void* operator new(std::size_t size) {
    if (s_allocationsLeft != 0 && --s_allocationsLeft == 0) throw std::bad_alloc();
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

#pragma GCC diagnostic pop

namespace mor::test {
namespace {

/// Memory that is short at one single allocation, for every allocation of an operation in turn.
class ShortMemory : public StoreTest {
protected:
    void sweep(const std::function<void(CMORCadDwgFileSystem&)>& operation) {
        bool failed = true;
        for (std::size_t nth = 1; failed; ++nth) {
            replaceDocument(host::createDocument(host::Release::R2018));
            ASSERT_TRUE(write("/a/b/f", "5"));
            auto store = std::make_unique<CMORCadDwgFileSystem>(fs());
            s_allocationsLeft = nth;
            try {
                operation(*store);
                store.reset();
            } catch (
                const std::bad_alloc&) {  // NOLINT(*-empty-catch): passes through, as it should
            }
            failed = s_allocationsLeft == 0;
            s_allocationsLeft = 0;
            expectNothingOpen();
            EXPECT_TRUE(write("/a/b/g", "7")) << nth;
            ASSERT_LT(nth, 20000u);
        }
    }
};

TEST_F(ShortMemory, EndsNoProcessAndLeavesAStoreThatWorks) {
    sweep([](CMORCadDwgFileSystem& store) { store.write(L"/a/b/g", value("6")); });
    sweep([](CMORCadDwgFileSystem& store) { store.del(L"/a/b/f"); });
    sweep([](CMORCadDwgFileSystem& store) { store.delDir(L"/a"); });
    sweep([](CMORCadDwgFileSystem& store) { store.removeFileSystemEx(); });
    sweep([](CMORCadDwgFileSystem& store) { store.checkFileSystem(); });
}

}  // namespace
}  // namespace mor::test
