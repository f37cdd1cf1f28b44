// The list of serial ports, read from a machine that a folder pretends to be.
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/posix/SerialPorts.h"
#include "tests/support/Folder.h"

namespace tesk::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class SerialPorts : public testing::Test {
 protected:
  SerialPorts() {
    for (const char* name : {"ttyS0", "ttyUSB3", "ttyS1", "tty1"}) WriteFile(Dev(name), "");
    AddPort("ttyS0", "devices/pnp/00:05", "serial");
    WriteFile(Sys("class/tty/ttyS0/type"), "4\n");
    AddPort("ttyS1", "devices/platform/serial8250", "serial8250");  // nobody built it in
    WriteFile(Sys("class/tty/ttyS1/type"), "0\n");
    fs::create_directories(Sys("class/tty/tty1"));  // a terminal without a device
    AddPort("ttyUSB3", "devices/usb1/1-2/1-2:1.0/ttyUSB3", "ftdi_sio");
    AddPort("ttyACM0", "devices/usb1/1-3", "cdc_acm");  // its node is not there
    WriteFile(Sys("devices/usb1/1-2/idVendor"), "0403\n");
    WriteFile(Sys("devices/usb1/1-2/manufacturer"), "FTDI\n");
    WriteFile(Sys("devices/usb1/1-2/product"), "USB Serial\n");
    fs::create_directories(Dev("serial/by-id"));
    fs::create_symlink("../../ttyUSB3", Lasting());
    WriteFile(Proc("812/comm"), "minicom\n");
    fs::create_directories(Proc("812/fd"));
    fs::create_directories(Lock());
  }

  fs::path Sys(const std::string& path) const { return root_.File("sys/" + path); }
  fs::path Dev(const std::string& path) const { return root_.File("dev/" + path); }
  fs::path Proc(const std::string& path) const { return root_.File("proc/" + path); }
  std::string Lock() const { return root_.File("lock"); }
  fs::path Lasting() const { return Dev("serial/by-id/usb-FTDI_A1-if00-port0"); }

  void AddPort(const std::string& name, const std::string& device, const std::string& driver) const {
    fs::create_directories(Sys("class/tty/" + name));
    fs::create_directories(Sys(device));
    fs::create_directories(Sys("drivers/" + driver));
    fs::create_symlink(Sys(device), Sys("class/tty/" + name + "/device"));
    fs::create_symlink(Sys("drivers/" + driver), Sys(device + "/driver"));
  }
  std::vector<platform::SerialPort> List() const {
    return platform::ListSerialPorts(
        {.sys = Sys("").string(), .dev = Dev("").string(), .proc = Proc("").string(), .lock = Lock()});
  }

 private:
  Folder root_;
};

TEST_F(SerialPorts, AreThoseWithADeviceAndANodeLastingNamesFirst) {
  const auto ports = List();
  ASSERT_EQ(ports.size(), 2U);
  EXPECT_EQ(ports[0].path, Lasting().string());
  EXPECT_EQ(ports[0].device, Dev("ttyUSB3").string());
  EXPECT_EQ(ports[0].adaptor, "FTDI USB Serial");
  EXPECT_EQ(ports[1].path, Dev("ttyS0").string());
  EXPECT_EQ(ports[1].adaptor, "serial");
  EXPECT_THAT(ports[1].access, HasSubstr(", mode -rw"));
  EXPECT_EQ(ports[1].free, true);
}

TEST_F(SerialPorts, AreHeldByWhoHasThemOpenOrLockedWithoutBeingTouched) {
  struct stat status {};
  ASSERT_EQ(::stat(Dev("ttyS0").c_str(), &status), 0);
  char file[64];
  std::snprintf(file, sizeof file, "%02x:%02x:%ju", major(status.st_dev), minor(status.st_dev),
                static_cast<std::uintmax_t>(status.st_ino));
  const auto holder = [&](const fs::path& evidence, const std::string& text, bool link = false) {
    link ? fs::create_symlink(text, evidence) : WriteFile(evidence, text);
    const auto port = List().back();
    fs::remove(evidence);
    return port.free == false ? port.holder : "free";
  };
  const std::string minicom = "minicom (process 812)";
  EXPECT_EQ(holder(Proc("812/fd/3"), Dev("ttyS0").string(), true), minicom);
  EXPECT_EQ(holder(Proc("locks"), "1: FLOCK  ADVISORY  WRITE 812 " + std::string(file) + " 0 EOF\n"),
            minicom);
  EXPECT_EQ(holder(Proc("locks"), "1: POSIX  ADVISORY  WRITE 812 " + std::string(file) + " 0 EOF\n"), "free");
  EXPECT_EQ(holder(fs::path(Lock() + "/LCK..ttyS0"), "       812\n"), minicom);
  EXPECT_EQ(holder(fs::path(Lock() + "/LCK..ttyS0"), "813\n"), "free")
      << "the program of an old lock is gone";
  EXPECT_EQ(holder(fs::path(Lock() + "/LCK..ttyS1"), "812\n"), "free");
  fs::remove(Proc("812/fd"));
  EXPECT_EQ(List().back().free, std::nullopt) << "what that process holds cannot be seen";
}

}  // namespace
}  // namespace tesk::test
