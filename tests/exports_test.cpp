// Every C function declared in the public header is exported by the shared library.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

// Names of the functions declared with XGGEO_API inside the header's extern "C" block; *count
// receives the number of XGGEO_API declarations seen, so a declaration the pattern misses shows.
std::set<std::string> declared_c_functions(std::size_t* count) {
  std::ifstream in(XGGEO_PUBLIC_HEADER);
  std::stringstream text;
  text << in.rdbuf();
  std::string header = text.str();
  const std::size_t cpp_part = header.find("} /* extern \"C\" */");
  if (cpp_part != std::string::npos) header.resize(cpp_part);
  header.erase(0, header.find("extern \"C\" {"));
  const std::regex decl(R"(XGGEO_API[^;(]*?\b(xgWKB_\w+)\s*\()");
  *count = 0;
  for (std::size_t at = header.find("XGGEO_API "); at != std::string::npos; at = header.find("XGGEO_API ", at + 1))
    ++*count;
  std::set<std::string> names;
  for (std::sregex_iterator it(header.begin(), header.end(), decl), end; it != end; ++it)
    names.insert((*it)[1].str());
  return names;
}

}  // namespace

TEST(Exports, EveryDeclaredFunctionResolvesInTheSharedLibrary) {
  std::size_t declarations = 0;
  const std::set<std::string> names = declared_c_functions(&declarations);
  ASSERT_EQ(names.size(), declarations);
  ASSERT_GE(names.size(), 29u);
  void* lib = dlopen(XGGEO_SHARED_LIB, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(lib, nullptr) << dlerror();
  for (const std::string& name : names) EXPECT_NE(dlsym(lib, name.c_str()), nullptr) << name;
  dlclose(lib);
}

TEST(Exports, InternalHelpersStayHidden) {
  void* lib = dlopen(XGGEO_SHARED_LIB, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(lib, nullptr) << dlerror();
  EXPECT_EQ(dlsym(lib, "_ZN2xg13geometry_sizeEPKhPj"), nullptr);  // xg::geometry_size
  dlclose(lib);
}

TEST(Exports, CodecClassMembersResolveUnderTheirMangledNames) {
  void* lib = dlopen(XGGEO_SHARED_LIB, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(lib, nullptr) << dlerror();
  for (const char* name : {"_ZN13CDataTransferC1Ev", "_ZN13CDataTransferD1Ev", "_ZN13CDataTransferC1ERKS_",
                           "_ZN13CDataTransferaSERKS_", "_ZN13CDataTransfer16SetCoordinateInfEddd",
                           "_ZN13CDataTransfer16GetCoordinateInfEP10_xgWKB_BOXPd",
                           "_ZN13CDataTransfer11Double2LongERdS0_RiS1_", "_ZN13CDataTransfer11Long2DoubleERiS0_RdS1_",
                           "_ZN13CDataTransfer10Double2IntERdS0_RiS1_", "_ZN13CDataTransfer10Int2DoubleERiS0_RdS1_",
                           "_ZN13CDataTransfer15Int2CompressIntERiS0_", "_ZN13CDataTransfer9GetNextXYEPKhRiS2_S2_",
                           "_ZN13CDataTransfer9AllocSizeEi", "_ZN13CDataTransfer19ConvertWkb2CompressEPKh",
                           "_ZN13CDataTransfer19ConvertCompress2WkbEPKh", "_ZN13CDataTransfer19ConvertCompress2WkbEPKhi",
                           "_ZN13CDataTransfer13GetResultSizeEv", "_ZN13CDataTransfercvPhEv"}) {
    EXPECT_NE(dlsym(lib, name), nullptr) << name;
  }
  dlclose(lib);
}
