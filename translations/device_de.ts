<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>DEV::DeviceSelector</name>
    <message>
        <source>Form</source>
        <translation>Formular</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Device:</source>
        <translation>Baustein:</translation>
    </message>
    <message>
        <source>Device Version:</source>
        <translation>Bausteinversion:</translation>
    </message>
    <message>
        <source>Series:</source>
        <translation>Serie:</translation>
    </message>
    <message>
        <source>Speed:</source>
        <translation>Geschwindigkeit:</translation>
    </message>
    <message>
        <source>Package:</source>
        <translation>Gehäuse:</translation>
    </message>
    <message>
        <source>Search:</source>
        <translation>Suche:</translation>
    </message>
    <message>
        <source>(0 matches)</source>
        <translation>(0 Treffer)</translation>
    </message>
    <message>
        <source>&lt;p style=&apos;line-height:60%&apos;&gt; Device Version: &lt;/p&gt;&lt;p style=&apos;font-size:9px;line-height:0px&apos;&gt; &amp;#10056;no version number is initial version &lt;/p&gt;</source>
        <translation>&lt;p style=&apos;line-height:60%&apos;&gt; Bausteinversion: &lt;/p&gt;&lt;p style=&apos;font-size:9px;line-height:0px&apos;&gt; &amp;#10056;ohne Versionsnummer: erste Version &lt;/p&gt;</translation>
    </message>
    <message>
        <source>(%1 matches)</source>
        <translation>(%1 Treffer)</translation>
    </message>
</context>
<context>
    <name>DEV::DeviceSelectorDialog</name>
    <message>
        <source>Select Device</source>
        <translation>Baustein auswählen</translation>
    </message>
</context>
</TS>
