#include "com/module_texts.hpp"

#include <algorithm>

#include <kaputil/automation/plain_text.hpp>
#include <kaputil/catalogue/catalogue.hpp>

#include "com/served_classes.hpp"
#include "com/type_libraries.hpp"

namespace kap::com {
namespace {

std::string withCommas(std::string version) {
    std::ranges::replace(version, '.', ',');
    return version;
}

std::string valueLine(const char* name, const String& value) {
    return "            VALUE \"" + std::string(name) + "\", \"" + value.utf8() + "\"\n";
}

std::string escaped(const String& text) {
    std::string made;
    for (const char byte : text.utf8()) {
        switch (byte) {
            case '&':
                made += "&amp;";
                break;
            case '<':
                made += "&lt;";
                break;
            case '"':
                made += "&quot;";
                break;
            default:
                made += byte;
        }
    }
    return made;
}

std::string braced(const String& identity) {
    return "{" + identity.utf8() + "}";
}

// Calls between threads go the way of every dispatch interface.
std::string proxyLine(const String& name, const String& identity, const TypeLibrary& types) {
    return "  <comInterfaceExternalProxyStub name=\"" + name.utf8() + "\" iid=\"" +
           braced(identity) +
           "\" proxyStubClsid32=\"{00020420-0000-0000-C000-000000000046}\" tlbid=\"" +
           braced(types.identity) + "\"/>\n";
}

}  // namespace

std::string resourceText() {
    const LibraryDescription& self = library();
    const std::string version = withCommas(self.fileVersion.utf8());
    std::string typeLibrariesText;
    for (const TypeLibrary& types : typeLibraries()) {
        typeLibrariesText +=
            plain::text(types.resource) + " TYPELIB \"" + types.fileName.utf8() + ".tlb\"\n";
    }
    return typeLibrariesText + "\n1 VERSIONINFO\n    FILEVERSION " + version +
           "\n    PRODUCTVERSION " + version +
           "\n    FILEOS 0x40004\n    FILETYPE 2\n{\n    BLOCK \"StringFileInfo\" {\n        BLOCK "
           "\"041004B0\" {\n" +
           valueLine("FileDescription", self.description) +
           valueLine("FileVersion", self.fileVersionText) +
           valueLine("InternalName", self.moduleName) +
           valueLine("OriginalFilename", self.moduleName + u".dll") +
           valueLine("ProductName", self.name) + valueLine("ProductVersion", self.fileVersionText) +
           "        }\n    }\n    BLOCK \"VarFileInfo\" {\n        VALUE \"Translation\", 0x410, "
           "1200\n"
           "    }\n}\n";
}

std::string manifestText(std::string_view architecture) {
    const LibraryDescription& self = library();
    const std::string module = self.moduleName.utf8();
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">\n"
        "  <assemblyIdentity type=\"win32\" name=\"" +
        module + "\" version=\"" + self.fileVersion.utf8() + "\" processorArchitecture=\"" +
        std::string(architecture) + "\"/>\n  <file name=\"" + module + ".dll\">\n";
    for (const TypeLibrary& types : typeLibraries()) {
        text += "    <typelib tlbid=\"" + braced(types.identity) + "\" version=\"" +
                types.version.utf8() + "\" helpdir=\"\"" +
                (types.resource == 1 ? std::string()
                                     : " resourceid=\"" + plain::text(types.resource) + "\"") +
                "/>\n";
    }
    for (const ServedClass& one : servedClasses()) {
        text += "    <comClass clsid=\"" + braced(one.classId) + "\" threadingModel=\"Apartment\"" +
                " tlbid=\"" + braced(one.types->identity) + "\" progid=\"" +
                one.programmaticName.utf8() + "\" description=\"" + escaped(one.summary) + "\"/>\n";
    }
    text += "  </file>\n";
    for (const TypeLibrary& types : typeLibraries()) {
        for (const PublishedClass& one : types.classes) {
            text += proxyLine(one.interfaceName, one.interfaceId, types);
            if (const ClassDescription* events = eventsOf(one)) {
                text += proxyLine(events->name, events->interfaceId, types);
            }
        }
    }
    return text + "</assembly>\n";
}

}  // namespace kap::com
