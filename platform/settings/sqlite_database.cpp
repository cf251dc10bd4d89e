#include "platform/settings/sqlite_database.h"

namespace platform {
namespace {

constexpr int busyTimeoutMilliseconds = 5000;

tl::unexpected<Error> errorOf(sqlite3* handle) {
    return settingsFailure(sqlite3_extended_errcode(handle),
                           std::string("settings store: ") + sqlite3_errmsg(handle));
}

/// The file as an address that declares it immutable.
std::string frozenAddress(const std::string& path) {
    std::string address = "file:";
    for (const char character : path) {
        switch (character) {
            case '%': address += "%25"; break;
            case '?': address += "%3f"; break;
            case '#': address += "%23"; break;
            default: address += character;
        }
    }
    return address + "?immutable=1";
}

}  // namespace

bool isDamage(const Error& error) {
    const int primary = error.code & 0xFF;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

Statement::Run::~Run() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

void Statement::Run::bindText(int index, std::string_view text) {
    sqlite3_bind_text64(statement_, index, text.data() == nullptr ? "" : text.data(), text.size(),
                        SQLITE_STATIC, SQLITE_UTF8);
}

void Statement::Run::bindBytes(int index, std::string_view bytes) {
    sqlite3_bind_blob64(statement_, index, bytes.data(), bytes.size(), SQLITE_STATIC);
}

Result<bool> Statement::Run::step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    return errorOf(sqlite3_db_handle(statement_));
}

std::optional<std::string_view> Statement::Run::bytes(int column) const {
    const int type = sqlite3_column_type(statement_, column);
    if (type != SQLITE_BLOB && type != SQLITE_TEXT) return std::nullopt;
    const auto* content = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    return content == nullptr ? std::string_view() : std::string_view(content, size);
}

std::string Statement::Run::text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return text == nullptr ? std::string() : text;
}

Result<Database> Database::open(const std::filesystem::path& file, Access access) {
    const bool isFrozen = access == Access::frozen;
    const std::string name = isFrozen ? frozenAddress(file.string()) : file.string();
    const int mode = isFrozen ? SQLITE_OPEN_READONLY | SQLITE_OPEN_URI : SQLITE_OPEN_READWRITE;
    sqlite3* handle = nullptr;
    const int code =
        sqlite3_open_v2(name.c_str(), &handle, mode | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_NOMUTEX, nullptr);
    Database database(handle);
    if (handle == nullptr) return settingsFailure(SQLITE_NOMEM, "settings store: out of memory");
    sqlite3_extended_result_codes(handle, 1);
    if (code != SQLITE_OK) return database.lastError();
    sqlite3_busy_timeout(handle, busyTimeoutMilliseconds);
    return database;
}

Result<Statement> Database::prepare(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(handle_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK)
        return lastError();
    return Statement(statement);
}

Result<void> Database::execute(const char* sql) {
    if (sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) return lastError();
    return {};
}

Result<std::string> Database::text(const char* sql) {
    Statement statement = TRY(prepare(sql));
    auto run = statement.run();
    const bool row = TRY(run.step());
    return row ? run.text(0) : std::string();
}

void Database::keepLog() { sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr); }

tl::unexpected<Error> Database::lastError() const { return errorOf(handle_.get()); }

}  // namespace platform
