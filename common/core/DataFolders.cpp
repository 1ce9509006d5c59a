#include "common/core/DataFolders.h"

namespace kesta {

void DataFolders::derive(const std::string& baseDir)
{
    BaseDir = baseDir;
    DataDir = BaseDir + "MORVO/KESTA/All";
    LogDir = BaseDir + "MORVO/KESTA/All/Log";
    UserDir = BaseDir + "MORVO/KESTA/All/User";
}

} // namespace kesta
