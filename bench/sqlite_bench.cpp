// The same accesses as in store_bench.cpp, asked of a table in memory: text key, text value.

#include <benchmark/benchmark.h>

#include <memory>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace mor::bench {
namespace {

constexpr int kFolders = 100;
constexpr int kValues = 10'000;

class Table {
public:
    Table() {
        sqlite3* opened = nullptr;
        sqlite3_open(":memory:", &opened);
        m_database.reset(opened);
        sqlite3_exec(opened, "CREATE TABLE store (path TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID",
                     nullptr, nullptr, nullptr);
        m_get = prepare("SELECT value FROM store WHERE path = ?1");
        m_put = prepare("INSERT OR REPLACE INTO store VALUES (?1, ?2)");
        for (int i = 0; i < kValues; ++i) {
            m_paths.push_back("/cfg/d" + std::to_string(i % kFolders) + "/v" +
                              std::to_string(i / kFolders));
            put(m_paths.back(), std::to_string(i));
        }
    }
    [[nodiscard]] const std::vector<std::string>& paths() const { return m_paths; }

    bool get(const std::string& path, std::string& value) {
        bind(m_get, 1, path);
        const bool found = sqlite3_step(m_get.get()) == SQLITE_ROW;
        if (found) value.assign(reinterpret_cast<const char*>(sqlite3_column_text(m_get.get(), 0)));
        sqlite3_reset(m_get.get());
        return found;
    }
    bool put(const std::string& path, const std::string& value) {
        bind(m_put, 1, path);
        bind(m_put, 2, value);
        const bool done = sqlite3_step(m_put.get()) == SQLITE_DONE;
        sqlite3_reset(m_put.get());
        return done;
    }

private:
    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close(database); }
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;
    Statement prepare(const char* text) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_database.get(), text, -1, &statement, nullptr);
        return Statement(statement);
    }
    static void bind(const Statement& statement, int place, const std::string& text) {
        sqlite3_bind_text(statement.get(), place, text.data(), static_cast<int>(text.size()),
                          SQLITE_STATIC);
    }

    std::unique_ptr<sqlite3, Close> m_database;  // behind its statements when they end
    Statement m_get;
    Statement m_put;
    std::vector<std::string> m_paths;
};

void sqliteGet(benchmark::State& state) {
    Table table;
    std::string value;
    std::size_t at = 0;
    for ([[maybe_unused]] auto step : state) {
        if (!table.get(table.paths()[at], value)) state.SkipWithError("the value is gone");
        at = (at + 7919) % table.paths().size();
    }
}

void sqlitePut(benchmark::State& state) {
    Table table;
    std::size_t at = 0;
    int number = 0;
    for ([[maybe_unused]] auto step : state) {
        if (!table.put(table.paths()[at], std::to_string(++number)))
            state.SkipWithError("the value cannot be written");
        at = (at + 7919) % table.paths().size();
    }
}

BENCHMARK(sqliteGet);
BENCHMARK(sqlitePut);

}  // namespace
}  // namespace mor::bench
