"""Random products without a fault, as folders on disk."""

import shutil
from pathlib import Path
from xml.sax.saxutils import escape, quoteattr

WORDS = ("access alarm archive audio backup badge billing camera card clock config counter "
         "dashboard device door energy event face fire gate guard heat intercom key lamp lift "
         "linkage map media meter mirror notice number parking patrol person print queue radio "
         "recorder relay report room route rule scene schedule sensor shelf signal site smoke "
         "sound storage stream survey task ticket time tower traffic turnstile user vehicle video "
         "visitor wall water weather window zone").split()


class Plugin:
    """One plugin: what its entry and its description say."""

    def __init__(self, identity, kind, version):
        self.id, self.kind, self.version = identity, kind, version
        self.depends_on = []  # (id, version)
        self.menu = []        # IDs of menu items


class GoodProduct:
    """A product made from a random generator; `write` puts it on disk."""

    def __init__(self, random):
        self.random = random
        self.words = random.sample(WORDS, len(WORDS))
        self.name, self.version = random.choice(
            [("NVX", "2.6.0"), ("NVX", "2.7.1.105"), ("NVX", "3.1.0.2"), ("NVT", "1.4.2"),
             ("NVT", "2.6.1.15")])
        self.sub_platforms = [Plugin(self.word() + ".platform", "sub", self.some_version())
                              for _ in range(random.choice([0, 0, 1, 2]))]
        self.servers = self.plugins("server", random.randint(1, 12))
        self.programs = self.plugins("program", random.choice([0, 0, 1, 3]))
        self.drivers = self.plugins("driver", random.choice([0, 0, 1, 3]))
        self.addons = [self.addon() for _ in range(random.choice([0, 0, 1, 2]))]
        self.offered = [self.word().capitalize() for _ in range(random.choice([0, 1]))]
        self.tools = [self.word().capitalize() + "Tool" for _ in range(random.choice([0, 1, 2]))]
        self.connect()

    def word(self):
        return self.words.pop()

    def some_version(self):
        return ".".join(str(self.random.randint(1, 9)) for _ in range(3))

    def plugins(self, kind, count):
        return [Plugin(f"{self.word()}.{kind}", kind, self.some_version()) for _ in range(count)]

    def addon(self):
        identity = self.word().capitalize()
        return identity, [Plugin(self.word() + ".server", "server", self.some_version())
                          for _ in range(self.random.randint(1, 2))]

    def connect(self):
        """Dependencies on earlier plugins only, so that there is no cycle."""
        earlier = list(self.sub_platforms)
        for plugin in [*self.servers, *(p for _, plugins in self.addons for p in plugins)]:
            count = min(len(earlier), self.random.choice([0, 1, 1, 2, 4]))
            plugin.depends_on = self.random.sample(earlier, count)
            if self.random.random() < 0.3:
                plugin.menu = [f"{plugin.id}.page{i}" for i in range(self.random.randint(1, 2))]
            earlier.append(plugin)
        for plugin in self.programs:
            servers = [p for p in self.servers]
            plugin.depends_on = self.random.sample(servers, min(len(servers), 1))

    # Files.

    def write(self, folder, library, program):
        """Writes the product to the empty `folder`. `library`, `program`: files to copy."""
        self.folder = Path(folder)
        meta = self.folder / "bin" / "META_INFO"
        meta.mkdir(parents=True)
        self.put("Product.xml", "ProductDescription", self.product())
        self.put("bin/META_INFO/DeviceDrivers.xml", "DAMDrivers",
                 [self.element("Driver", ID=p.id, Version=p.version) for p in self.drivers])
        self.put("bin/META_INFO/Platform.xml", "Platform",
                 [self.text("Version", "3.2.0"), self.text("PlatformDBType", "postgres"),
                  self.text("OneChannelForOneCamera", "true")])
        self.put("bin/META_INFO/Portal.xml", "PortalDescription", self.portal())
        addon_plugins = [p for _, plugins in self.addons for p in plugins]
        for plugin in [*self.servers, *self.programs, *self.drivers, *addon_plugins]:
            self.put(f"bin/META_INFO/{plugin.id}/{plugin.id}.xml", "Plugin",
                     self.description(plugin))
            name = f"{plugin.id}.{'exe' if plugin.kind == 'program' else 'dll'}"
            shutil.copy(program if plugin.kind == "program" else library,
                        self.folder / "bin" / name)
        for plugin in self.sub_platforms:
            shutil.copy(library, self.folder / "bin" / f"{plugin.id}.dll")
        if self.addons or self.offered or self.tools:
            self.write_catalogue()

    def write_catalogue(self):
        self.put("bin/TevAddons/InstalledProducts.xml", "InstalledProductsDescription",
                 [self.section("Addons", [self.element("Addon", ID=i, Version="1.4.0")
                                          for i, _ in self.addons]),
                  self.section("Tools", [self.element("Tool", ID=i, Version="1.0.0")
                                         for i in self.tools])])
        self.put("ProductAddons.xml", "AddonList",
                 [self.section("Addon", [self.text("ID", i), self.text("NameKey", i + ".name"),
                                         self.text("Version", "1.4.0"),
                                         self.text("PackageSize", "1024")])
                  for i in [*(i for i, _ in self.addons), *self.offered]])
        self.put("ProductTools.xml", "ToolList",
                 [self.section("Tool", [self.text("ID", i), self.text("Version", "1.0.0"),
                                        self.text("ServerSide", "1")]) for i in self.tools])
        logo = {"NVX": "Velmora Professional", "NVT": "Velmora Lite"}[self.name]
        supported = self.section("SupportProducts", [self.section("Product", [
            self.text("ProductLogo", logo),
            self.text("MinVersion", ".".join(self.version.split(".")[:3])),
            self.text("MaxVersion", "9.9.9")])])
        for identity, plugins in self.addons:
            self.put(f"bin/TevAddons/{identity}/{identity}.xml", "AddonDescription",
                     [self.text("ID", identity), self.text("NameKey", identity + ".name"),
                      self.text("Version", "1.4.0"), self.text("HaveClientPackage", "0"),
                      self.text("PublishingType", "1"), self.text("IsDistributed", "0"), supported,
                      self.section("Plugins", [
                          self.element("Plugin", ID=p.id, Version=p.version, Category="server")
                          for p in plugins])])
        for identity in self.tools:
            self.put(f"bin/TevAddons/{identity}/{identity}.xml", "ToolDescription",
                     [self.text("ID", identity), self.text("Version", "1.0.0"),
                      self.text("ServerSide", "1"), supported])

    def product(self):
        logo = {"NVX": "Velmora Professional", "NVT": "Velmora Lite"}[self.name]
        parts = [self.text("Product", self.name), self.text("ProductLogo", logo),
                 self.text("Version", self.version), self.text("EditionConfig", "Neutral"),
                 self.element("Platform", ID="site.platform", Version="3.2.0"),
                 self.section("Languages", [self.element("Language", ID="en")]),
                 self.section("Plugins", [self.entry(p) for p in [*self.servers, *self.programs]])]
        if self.sub_platforms:
            parts.append(self.section("SubPlatforms", [
                self.element("SubPlatform", ID=p.id, Version=p.version)
                for p in self.sub_platforms]))
        return parts

    def entry(self, plugin):
        attributes = {"ID": plugin.id, "Version": plugin.version}
        if self.random.random() < 0.4:
            attributes["Lazystart"] = self.random.choice(["true", "false"])
        return self.element("Plugin", **attributes)

    def description(self, plugin):
        parts = [self.text("Type", "1" if plugin.kind == "program" else "2"),
                 self.text("ID", plugin.id), self.text("Name", plugin.id.capitalize()),
                 self.text("Version", plugin.version)]
        if self.random.random() < 0.7:
            parts.append(self.text("IsDistributed", self.random.choice(["0", "1"])))
        dependencies = [self.dependency(other) for other in plugin.depends_on]
        if self.random.random() < 0.3:
            dependencies.append(self.element("Platform", ID="site.platform", Version="3.2.0"))
        if dependencies:
            parts.append(self.section("DependencyList", dependencies))
        if plugin.menu:
            parts.append(self.section("MenuList", [
                self.section("MenuItem", [self.text("ID", i), self.text("MenuType", "1"),
                                          self.text("Level", " 2 " if i[-1] == "1" else "2")])
                for i in plugin.menu]))
        return parts

    def dependency(self, other):
        attributes = {"ID": other.id}
        if self.random.random() < 0.7:
            attributes["Version"] = other.version
        if self.random.random() < 0.5:
            attributes["DependentType"] = "1"
        return self.element("Plugin", **attributes)

    def portal(self):
        pages = [i for p in self.servers for i in p.menu]
        if not pages:
            return []
        items = [self.element("MenuItem", Type="2", ID=i + ".entry", RefID=i) for i in pages]
        name = {"Name": "Monitoring"}
        top = dict(Type="1", ID="monitor", RefID=pages[0])
        return [self.section("FullNavigationMenuList",
                             [self.section("MenuItem", items, **top, **name)]),
                self.section("FullSceneMenuList", [self.section("MenuItem", items, **top)]),
                self.section("PortalModeList", [self.section("PortalMode", [
                    self.text("Type", "1"),
                    self.section("SceneModeList", [self.section("SceneMode", [
                        self.text("Type", "10"), self.section("SceneMenuList", items)])])])])]

    # Elements, as lists of lines; written in one of the ways that mean the same.

    def put(self, name, root, parts):
        lines = self.section(root, parts)
        if self.random.random() < 0.8:
            lines.insert(0, '<?xml version="1.0" encoding="UTF-8"?>')
        text = ("\r\n" if self.random.random() < 0.2 else "\n").join(lines)
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        mark = b"\xef\xbb\xbf" if self.random.random() < 0.1 else b""
        path.write_bytes(mark + text.encode() + b"\n" * self.random.randint(0, 2))

    def attributes(self, attributes):
        pairs = list(attributes.items())
        self.random.shuffle(pairs)
        return "".join(f" {name}={quoteattr(value)}" for name, value in pairs)

    def element(self, name, **attributes):
        return [f"<{name}{self.attributes(attributes)}" +
                self.random.choice(["/>", " />", f"></{name}>"])]

    def text(self, name, text):
        written = f"<![CDATA[{text}]]>" if self.random.random() < 0.05 else escape(text)
        return [f"<{name}>{written}</{name}>"]

    def section(self, name, parts, **attributes):
        lines = [f"<{name}{self.attributes(attributes)}>"]
        for part in parts:
            if self.random.random() < 0.03:
                lines.append("  <!-- <Plugin ID='commented.server'/> -->")
            lines += ["  " + line for line in part]
        return [*lines, f"</{name}>"]
