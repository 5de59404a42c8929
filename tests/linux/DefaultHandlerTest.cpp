// Tests platform/linux/DefaultHandler.h: the rules that do not need GIO for a judge.
#include "platform/linux/DefaultHandler.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/linux/CurrentDesktop.h"
#include "platform/linux/MimeApps.h"
#include "tests/linux/PrivateFolder.h"

namespace Vastel_Connect {
namespace {

constexpr const char* kChoices = "config/mimeapps.list";
constexpr std::string_view kUrl = "http://127.0.0.1/?a='b'&c=\"$(d)\"";

/// A desktop of a user whose default handler of http is the application "alpha".
class DefaultHandlerOfHttp : public testing::Test {
 protected:
  DefaultHandlerOfHttp() {
    environment.set("HOME", folder.path("home"));
    environment.set("XDG_CONFIG_HOME", folder.path("config"));
    environment.set("XDG_CONFIG_DIRS", folder.path("etc"));
    environment.set("XDG_DATA_HOME", folder.path("data"));
    environment.set("XDG_DATA_DIRS", folder.path("share"));
    environment.set("PATH", folder.path("bin"));
    for (const char* name : {"XDG_CURRENT_DESKTOP", "SNAP", "GTK_USE_PORTAL"}) {
      environment.set(name, std::nullopt);
    }
    for (const char* name : {"one", "env"}) makeExecutable(std::string("bin/") + name);
    folder.write("config/mimeapps.list",
                 "[Default Applications]\nx-scheme-handler/http=alpha.desktop;\n");
    writeEntry("Exec=one %u");
  }

  void makeExecutable(const std::string& name) { ::chmod(folder.write(name, "").c_str(), 0700); }

  void writeEntry(const std::string& lines) {
    folder.write("share/applications/alpha.desktop",
                 "[Desktop Entry]\nType=Application\nName=A\n" + lines + "\n");
  }

  /// The command line that `exec` comes to, its words in <>; "not plain".
  std::string command(const std::string& exec) {
    writeEntry("Exec=" + exec);
    const auto handler = findDefaultHandler("http", kUrl);
    if (!handler) return "not plain";
    std::string text = std::filesystem::relative(handler->program, folder.path("."));
    for (const std::string& argument : handler->arguments) {
      text += " <" + (argument == kUrl ? "URL" : argument) + ">";
    }
    return text;
  }

  [[nodiscard]] static bool isPlain(std::string_view scheme = "http") {
    return findDefaultHandler(scheme, kUrl).has_value();
  }

  using Files = std::map<std::string, std::string>;

  /// The same with other files, which are then as they were.
  bool isPlainWith(const Files& files, std::string_view scheme = "http") {
    Files before;
    for (const auto& [name, content] : files) {
      before[name] = folder.read(name);
      folder.write(name, content);
    }
    const bool result = isPlain(scheme);
    for (const auto& [name, content] : before) {
      folder.write(name, content);
      if (content.empty()) std::filesystem::remove(folder.path(name));
    }
    return result;
  }

  void expectNotPlainWithHostile(const std::string& name) {
    ASSERT_TRUE(isPlain()) << name;
    EXPECT_FALSE(isPlainWith({{name,
                               "\x7f"
                               "ELF\x02\x01\x01"}}))
        << name;
    // A reader that waits for a writer would stop here.
    ASSERT_EQ(::mkfifo(folder.path(name).c_str(), 0600), 0);
    EXPECT_FALSE(isPlain()) << name;
    std::filesystem::remove(folder.path(name));
  }

  PrivateFolder folder;
  ScopedEnvironment environment;
};

TEST_F(DefaultHandlerOfHttp, IsTheApplicationThatTheUserChose) {
  const auto handler = findDefaultHandler("http", kUrl);
  ASSERT_TRUE(handler);
  EXPECT_EQ(handler->application, "alpha");
  EXPECT_EQ(handler->program, folder.path("bin/one"));
  EXPECT_EQ(handler->arguments, (std::vector<std::string>{"one", std::string(kUrl)}));
}

TEST_F(DefaultHandlerOfHttp, IsLookedForInTheUsualFoldersWhereNoneAreNamed) {
  for (const char* name :
       {"XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS"}) {
    environment.set(name, std::nullopt);
  }
  environment.set("HOME", "/home/user");
  const auto folders = findMimeFolders();
  ASSERT_TRUE(folders);
  std::string found;
  for (const auto& [path, holdsEntries] : *folders) found += path + (holdsEntries ? "!\n" : "\n");
  EXPECT_EQ(found,
            "/home/user/.config\n/etc/xdg\n/home/user/.local/share/applications!\n"
            "/usr/local/share/applications!\n/usr/share/applications!\n");
}

TEST_F(DefaultHandlerOfHttp, GetsTheUrlAsOneWord) {
  makeExecutable("usr/bin/chromium");
  const std::string chromium = folder.path("usr/bin/chromium");
  const struct {
    std::string exec;
    std::string command;
  } rows[] = {
      {"one %u", "bin/one <one> <URL>"},
      {"one %U", "bin/one <one> <URL>"},
      {"  one   --new  %u  -x ", "bin/one <one> <--new> <URL> <-x>"},
      {chromium + " %U", "usr/bin/chromium <" + chromium + "> <URL>"},
      {"env A=/b/c.desktop one %u", "bin/env <env> <A=/b/c.desktop> <one> <URL>"},
      {"one @@u %u @@", "bin/one <one> <@@u> <URL> <@@>"},
  };
  for (const auto& [exec, expected] : rows) EXPECT_EQ(command(exec), expected) << exec;
}

TEST_F(DefaultHandlerOfHttp, IsNotPlainWithAnUnusualCommandLine) {
  const std::string_view execs[] = {
      "",           "one",        "%u",
      "%u one",     "one %f",     "one %F",
      "one %",      "one %% %u",  "one %i %u",
      "one %c %u",  "one %k %u",  "one --url=%u",
      "one %u%u",   "one %u %u",  "one \"%u\"",
      "\"one\" %u", "one 'a' %u", "one a\\sb %u",
      "one\t%u",    "one $A %u",  "one ~ %u",
      "one `a` %u", "one a|b %u", "one a&b %u",
      "one a;b %u", "none %u",    "/none/one %u",
      "bin/one %u", "./one %u",   "bin %u",
      "one * %u",   "one # %u",   "one \xc3\xbc %u",
  };
  for (const std::string_view exec : execs) {
    EXPECT_EQ(command(std::string(exec)), "not plain") << exec;
  }
}

TEST_F(DefaultHandlerOfHttp, IsNotPlainWithAnUnusualKey) {
  const std::string_view keys[] = {
      "Terminal=true",  "Terminal=1",     "DBusActivatable=true", "Hidden=true",     "Path=/tmp",
      "TryExec=none",   "TryExec=o\\sne", "TryExec=/none",        "Type=Link",       "Type=",
      "no equals sign", "[Broken",        "DBusActivatable=True", "Hidden=false \t",
  };
  for (const std::string_view key : keys) {
    writeEntry("Exec=one %u\n" + std::string(key));
    EXPECT_FALSE(isPlain()) << key;
  }
  writeEntry(
      "Exec=one %u\nTerminal=false\nDBusActivatable=false\nHidden=false\nPath=\nTryExec=one\n"
      "NoDisplay=true\nStartupNotify=true\nName[de]=\xff\n\n[Desktop Action new]\nExec=none");
  EXPECT_TRUE(isPlain());
}

TEST_F(DefaultHandlerOfHttp, IsNotPlainInAnUnusualEnvironment) {
  const struct {
    const char* name;
    std::optional<std::string> value;
  } rows[] = {
      {"HOME", std::nullopt},
      {"HOME", "home"},
      {"XDG_CONFIG_HOME", "config"},
      {"XDG_CONFIG_DIRS", "/etc/none:etc"},
      {"XDG_DATA_HOME", "data"},
      {"XDG_DATA_DIRS", folder.path("share") + ":share"},
      {"PATH", std::nullopt},
      {"PATH", ""},
      {"PATH", "bin"},
      {"SNAP", "/snap/connect"},
      {"GTK_USE_PORTAL", "1"},
      {"XDG_CURRENT_DESKTOP", "KDE"},
      {"XDG_CURRENT_DESKTOP", "Other:KDE"},
      {"XDG_CURRENT_DESKTOP", "../config/made"},
      {"XDG_CURRENT_DESKTOP", "Made:a b"},
  };
  for (const auto& [name, value] : rows) {
    ScopedEnvironment other;
    other.set(name, value);
    EXPECT_FALSE(isPlain()) << name << "=" << value.value_or("(not set)");
  }
  EXPECT_TRUE(isPlain());
}

/// The line of a list for one scheme, in a group of its own.
std::string list(const std::string& line, const std::string& group = "Default Applications") {
  return "[" + group + "]\nx-scheme-handler/" + line + "\n";
}

TEST_F(DefaultHandlerOfHttp, IsReadFromTheListsOfItsSchemeAlone) {
  for (const char* scheme : {"https", "htt", ""}) EXPECT_FALSE(isPlain(scheme)) << scheme;
  // The handler of a file is that of its type.
  EXPECT_FALSE(isPlainWith({{kChoices, list("file=alpha.desktop")}}, "file"));
  const std::string longest = "http=alpha.desktop" + std::string(16384 - 13, ';');
  EXPECT_TRUE(isPlainWith({{kChoices, list(longest)}}));
  EXPECT_FALSE(isPlainWith({{kChoices, list(longest + ";")}}));
  const std::string cache = list("http=alpha.desktop;", "MIME Cache");
  EXPECT_TRUE(isPlainWith({{kChoices, ""}, {"share/applications/mimeinfo.cache", cache}}));
  EXPECT_FALSE(isPlainWith({{kChoices, ""}, {"config/mimeinfo.cache", cache}}));
}

TEST_F(DefaultHandlerOfHttp, IsNotPlainWithAnUnusualName) {
  writeEntry("Exec=one %u");
  const std::string text = folder.read("share/applications/alpha.desktop");
  const std::string_view ids[] = {
      "alpha",
      "../applications/alpha.desktop",
      "sub/alpha.desktop",
      "al pha.desktop",
      "..",
      "al\\spha.desktop",
      "\xc3\xbc.desktop",
      "/alpha.desktop",
  };
  for (const std::string_view id : ids) {
    folder.write("share/applications/" + std::string(id == ".." ? "x" : id), text);
    folder.write("config/mimeapps.list",
                 "[Default Applications]\nx-scheme-handler/http=" + std::string(id) + "\n");
    EXPECT_FALSE(isPlain()) << id;
  }
}

// A folder "alpha" could hold a "beta.desktop", and which of both is meant depends on the reader.
TEST_F(DefaultHandlerOfHttp, IsNotPlainWhereItCouldStandInASubfolder) {
  folder.write("config/mimeapps.list",
               "[Default Applications]\nx-scheme-handler/http=alpha-beta-gamma.desktop\n");
  folder.write("share/applications/alpha-beta-gamma.desktop",
               "[Desktop Entry]\nType=Application\nExec=one %u\n");
  for (const char* name : {"share/applications/alpha", "share/applications/alpha-beta"}) {
    EXPECT_TRUE(isPlain());
    std::filesystem::create_directory(folder.path(name));
    EXPECT_FALSE(isPlain()) << name;
    std::filesystem::remove(folder.path(name));
  }
}

TEST_F(DefaultHandlerOfHttp, IsNotPlainWithAHostileFileBeforeTheFirstChoice) {
  environment.set("XDG_CURRENT_DESKTOP", "Made");
  // The last of those that choose, so that all are read.
  std::filesystem::rename(folder.path(kChoices), folder.path("share/applications/mimeapps.list"));
  for (const char* name :
       {"config/made-mimeapps.list", "etc/mimeapps.list", "data/applications/mimeapps.list",
        "share/applications/defaults.list", "data/applications/alpha.desktop", kChoices}) {
    expectNotPlainWithHostile(name);
  }
  folder.write("share/applications/mimeapps.list",
               list("http=alpha.desktop", "Added Associations"));
  expectNotPlainWithHostile("share/applications/mimeinfo.cache");

  folder.write(kChoices, list("http=alpha.desktop"));
  for (const char* name : {"etc/mimeapps.list", "share/applications/mimeinfo.cache"}) {
    ASSERT_EQ(::mkfifo(folder.path(name).c_str(), 0600), 0);
  }
  EXPECT_TRUE(isPlain());
}

// On KDE an answer is plain only where its own opener gives the same one.
TEST_F(DefaultHandlerOfHttp, IsPlainOnKdeWhereItsRulesGiveItToo) {
  environment.set("XDG_CURRENT_DESKTOP", "KDE");
  const std::string choices =
      list("http=alpha.desktop;") + list("https=alpha.desktop;") + list("tel=alpha.desktop;");
  folder.write(kChoices, choices);
  for (const char* scheme : {"http", "https", "tel"}) EXPECT_TRUE(isPlain(scheme)) << scheme;

  // It takes the handler of https for http.
  const std::pair beta(kChoices, choices + list("https=beta.desktop;"));
  const std::pair entry("share/applications/beta.desktop",
                        "[Desktop Entry]\nType=Application\nName=B\nExec=one %u\n");
  EXPECT_FALSE(isPlainWith({beta}, "http"));
  EXPECT_FALSE(isPlainWith({beta, entry}, "http"));
  EXPECT_TRUE(isPlainWith({beta, entry}, "https"));

  // It does not read these files.
  const Files ofKde = {{"config/kde-mimeapps.list", list("tel=beta.desktop;")}};
  EXPECT_TRUE(isPlainWith(ofKde, "https"));
  EXPECT_FALSE(isPlainWith(ofKde, "tel"));
  EXPECT_FALSE(isPlainWith({{kChoices, ""}, {"share/applications/defaults.list", choices}}, "tel"));

  // What is added or removed has a say.
  const std::string added = list("tel=beta.desktop;", "Added Associations");
  const std::string removed = list("tel=beta.desktop;", "Removed Associations");
  EXPECT_TRUE(isPlainWith({{kChoices, choices + added}}, "tel"));
  EXPECT_FALSE(isPlainWith({{kChoices, choices + removed}}, "tel"));
  EXPECT_TRUE(isPlainWith({{kChoices, ""}, {"etc/mimeapps.list", choices}}, "tel"));
  EXPECT_FALSE(isPlainWith({{kChoices, added}, {"etc/mimeapps.list", choices}}, "tel"));

  // Where nobody has chosen, or what is chosen is gone, it has an order of its own.
  EXPECT_FALSE(isPlainWith(
      {{"share/applications/mimeinfo.cache", list("sip=alpha.desktop;", "MIME Cache")}}, "sip"));
  EXPECT_FALSE(isPlainWith({{kChoices, list("tel=gone.desktop;alpha.desktop;")}}, "tel"));

  // It may be told not to open some URLs.
  EXPECT_TRUE(isPlainWith({{"config/kdeglobals", "[A][B]\n#\xff\nKDE URL Restrictions=1\n"}}));
  EXPECT_FALSE(isPlainWith({{"etc/kdeglobals", "[A][B]\n[KDE URL Restrictions][$i]\n"}}));
}

TEST(IsKde, ByAnyNameOfTheDesktop) {
  ScopedEnvironment environment;
  environment.set("XDG_CURRENT_DESKTOP", "Other:kDe");
  EXPECT_TRUE(isKde());
  for (const auto& other :
       {std::optional<std::string>("GNOME:KDEX"), std::optional<std::string>()}) {
    environment.set("XDG_CURRENT_DESKTOP", other);
    EXPECT_FALSE(isKde());
  }
}

}  // namespace
}  // namespace Vastel_Connect
