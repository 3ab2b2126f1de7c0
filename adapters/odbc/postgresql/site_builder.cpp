#include "adapters/odbc/postgresql/site_builder.h"

#include "adapters/odbc/odbc_link.h"
#include "adapters/odbc/postgresql/dictionary_scripts.h"

namespace sabrel::odbc {

SiteBuilder::SiteBuilder(const ProfileSet& profiles)
    : link_(
          std::make_unique<OdbcLink>(profiles, std::make_shared<DatabaseError>(), Opening::kBare)) {
  const ConnectionProfile& profile = profiles.Session();
  if (EngineForDriver(profile.Driver) != &PostgresqlEngine()) {
    throw RuntimeError(RuntimeErrorNumber::kInvalidCall,
                       "The connection profile \"" + profile.Name + "\" has the driver \"" +
                           profile.Driver +
                           "\"; a site is made with the ODBC driver of PostgreSQL, or as a file");
  }
  // One thread's requests follow each other on one connection, so that they share this transaction.
  link_->ExecuteNative("BEGIN");
  for (const std::string_view statement : DictionaryStatements()) link_->ExecuteNative(statement);
}

SiteBuilder::~SiteBuilder() {
  if (finished_) return;
  try {
    link_->ExecuteNative("ROLLBACK");
  } catch (const RuntimeError&) {  // the connection ends, which takes everything back too
  }
}

void SiteBuilder::Execute(std::string_view sql) { link_->Execute(sql, {}); }

void SiteBuilder::ExecuteNative(std::string_view sql) { link_->ExecuteNative(sql); }

void SiteBuilder::Finish() {
  link_->ExecuteNative("COMMIT");
  finished_ = true;
  link_->ShutDown();
}

const DatabaseError& SiteBuilder::Error() const noexcept { return link_->LastError(); }

}  // namespace sabrel::odbc
