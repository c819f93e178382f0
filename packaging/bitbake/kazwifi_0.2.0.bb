SUMMARY = "Wi-Fi management library for embedded devices"
DESCRIPTION = "For the user interface of a device: switches Wi-Fi on and off, scans, lists the networks in range, \
connects, forgets, and reports the state of the connection."
SECTION = "libs"
# The sources state no licence.
LICENSE = "CLOSED"

# The source archive that `./dev package` makes, unless the layer sets another one.
KAZWIFI_SRC_URI ?= "file://kazwifi_${PV}.orig.tar.xz"
SRC_URI = "${KAZWIFI_SRC_URI}"

inherit cmake pkgconfig

# fmt and spdlog must be shared libraries, and spdlog must use this fmt: only then the log goes to the process's default
# logger.
DEPENDS = "fmt spdlog systemd tl-expected"

EXTRA_OECMAKE = "-DBUILD_TESTING=OFF -DKAZ_BUILD_EXAMPLES=OFF -DCMAKE_SKIP_INSTALL_RPATH=ON"

# system-platform: the device has its own libkazdbus, libkazmetrics and libkazcommon, with the CMake package kazplatform.
PACKAGECONFIG ??= "tools"
PACKAGECONFIG[tools] = "-DKAZ_BUILD_TOOLS=ON -DKAZ_BUILD_SIMULATOR=ON,-DKAZ_BUILD_TOOLS=OFF -DKAZ_BUILD_SIMULATOR=OFF,cli11 libedit nlohmann-json utf8proc"
PACKAGECONFIG[system-platform] = "-DKAZ_PLATFORM=system,-DKAZ_PLATFORM=bundled,kazplatform"

# The same packages as Debian's; debian.bbclass renames the libraries to libkazwifi0 and so on.
PACKAGES = "${PN}-dbg ${PN}-src ${PN}-tools ${PN}-staticdev ${PN}-dev libkazplatform-dev libkazdbus libkazmetrics libkazcommon ${PN}"

FILES:${PN} = "${libdir}/libkazwifi.so.0*"
FILES:${PN}-dev = "${includedir}/wifi \
    ${libdir}/libkazwifi.so \
    ${libdir}/cmake/kazwifi \
    ${libdir}/pkgconfig/kazwifi.pc \
    ${libdir}/pkgconfig/kazwifi-client.pc"
FILES:${PN}-staticdev = "${libdir}/libkazwifi-client.a"
FILES:${PN}-tools = "${bindir}/kaz-device-sim \
    ${bindir}/kazwifictl \
    ${datadir}/bash-completion/completions/kazwifictl \
    ${datadir}/fish/vendor_completions.d/kazwifictl.fish \
    ${datadir}/zsh/site-functions/_kazwifictl \
    ${mandir}/man1/kaz-device-sim.1 \
    ${mandir}/man1/kazwifictl.1"
FILES:libkazdbus = "${libdir}/libkazdbus.so.0*"
FILES:libkazmetrics = "${libdir}/libkazmetrics.so.0*"
FILES:libkazcommon = "${libdir}/libkazcommon.so.0*"
FILES:libkazplatform-dev = "${includedir}/kaz \
    ${libdir}/libkazdbus.so \
    ${libdir}/libkazmetrics.so \
    ${libdir}/libkazcommon.so \
    ${libdir}/cmake/kazplatform"

RDEPENDS:${PN}-dev = "${PN} (= ${EXTENDPKGV})"
RDEPENDS:libkazplatform-dev = "libkazdbus (= ${EXTENDPKGV}) libkazmetrics (= ${EXTENDPKGV}) libkazcommon (= ${EXTENDPKGV})"
RRECOMMENDS:${PN} = "wpa-supplicant"
RRECOMMENDS:${PN}-tools = "dbus"
