#include "tests/faults/SmallProduct.h"

const std::map<std::string, std::string>& SmallProduct() {
  static const std::map<std::string, std::string> files = {
      {"Product.xml",
       "<ProductDescription><Product>NVX</Product><ProductLogo>l</ProductLogo>"
       "<Version>2.6.0.1</Version><Languages><Language ID='en'/></Languages>"
       "<Plugins><Plugin ID='p0'/><Plugin ID='p1' Version='1'/></Plugins>"
       "<SubPlatforms><SubPlatform ID='p2'/></SubPlatforms></ProductDescription>\n"},
      {"bin/META_INFO/DeviceDrivers.xml", "<DAMDrivers><Driver ID='d.driver'/></DAMDrivers>"},
      {"bin/META_INFO/d.driver/d.driver.xml", "<Plugin><Type>3</Type><ID>d.driver</ID></Plugin>"},
      {"bin/META_INFO/Platform.xml", "<Platform><Version>1</Version></Platform>"},
      {"bin/META_INFO/Portal.xml",
       "<PortalDescription><FullNavigationMenuList><MenuItem ID='m'><MenuItem ID='n'/></MenuItem>"
       "</FullNavigationMenuList></PortalDescription>"},
      {"bin/META_INFO/p0/p0.xml",
       "<Plugin><Type>2</Type><ID>p0</ID><MenuList><MenuItem ID='i'/></MenuList></Plugin>"},
      {"bin/META_INFO/p1/p1.xml",
       "<Plugin><Type>2</Type><ID>p1</ID><DependencyList><Plugin ID='p0'/></DependencyList>"
       "</Plugin>"},
      {"bin/TevAddons/InstalledProducts.xml",
       "<InstalledProductsDescription><ClientPackage><Path>c</Path></ClientPackage><Addons>"
       "<Addon ID='A' Version='1.0'/></Addons><Tools><Tool ID='T'/></Tools>"
       "</InstalledProductsDescription>"},
      {"bin/TevAddons/A/A.xml",
       "<AddonDescription><ID>A</ID><Version>1.0</Version><SupportProducts><Product>"
       "<ProductLogo>Velmora Professional</ProductLogo><MinVersion>2.5.0</MinVersion>"
       "<MaxVersion>2.7.0</MaxVersion></Product></SupportProducts></AddonDescription>"},
      {"bin/TevAddons/T/T.xml", "<ToolDescription><ID>T</ID></ToolDescription>"},
      {"ProductAddons.xml",
       "<AddonList><Addon><ID>A</ID><Version>0.9</Version></Addon></AddonList>"},
      {"ProductTools.xml", "<ToolList><Tool><ID>T</ID><Version>0.9</Version></Tool></ToolList>"}};
  return files;
}

void WriteSmallProduct(const ProductTree& tree) {
  for (const auto& [path, content] : SmallProduct()) tree.Write(path, content);
}
