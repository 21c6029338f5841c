<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>DEV::ChipRequirements</name>
    <message>
        <source>&apos;%1&apos; is not a resource column (IO, LUT, FF, ROM16, SSRAM, BSRAM, User Flash, DSP, PLL)</source>
        <translation>&apos;%1&apos; ist keine Ressourcenspalte (IO, LUT, FF, ROM16, SSRAM, BSRAM, User Flash, DSP, PLL)</translation>
    </message>
    <message>
        <source>%1: &apos;%2&apos; is not a size such as 500Kb or 1Mb</source>
        <translation>%1: &apos;%2&apos; ist keine Größe wie 500Kb oder 1Mb</translation>
    </message>
    <message>
        <source>%1: &apos;%2&apos; is not a whole number</source>
        <translation>%1: &apos;%2&apos; ist keine ganze Zahl</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not COLUMN=VALUE</source>
        <translation>&apos;%1&apos; hat nicht die Form SPALTE=WERT</translation>
    </message>
</context>
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
    <message>
        <source>Copy part number</source>
        <translation>Bestellnummer kopieren</translation>
    </message>
    <message>
        <source>Copy row</source>
        <translation>Zeile kopieren</translation>
    </message>
    <message>
        <source>Series</source>
        <translation>Serie</translation>
    </message>
    <message>
        <source>Limits the table to one series</source>
        <translation>Beschränkt die Tabelle auf eine Serie</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>Baustein</translation>
    </message>
    <message>
        <source>Limits the table to one device</source>
        <translation>Beschränkt die Tabelle auf einen Baustein</translation>
    </message>
    <message>
        <source>Device version</source>
        <translation>Bausteinversion</translation>
    </message>
    <message>
        <source>Limits the table to one device version; the blank entry is the initial version</source>
        <translation>Beschränkt die Tabelle auf eine Bausteinversion; der leere Eintrag ist die erste Version</translation>
    </message>
    <message>
        <source>Package</source>
        <translation>Gehäuse</translation>
    </message>
    <message>
        <source>Limits the table to one package</source>
        <translation>Beschränkt die Tabelle auf ein Gehäuse</translation>
    </message>
    <message>
        <source>Speed grade</source>
        <translation>Geschwindigkeitsklasse</translation>
    </message>
    <message>
        <source>Limits the table to one speed grade</source>
        <translation>Beschränkt die Tabelle auf eine Geschwindigkeitsklasse</translation>
    </message>
    <message>
        <source>Search</source>
        <translation>Suche</translation>
    </message>
    <message>
        <source>Limits the table to the chips in which the typed text is found</source>
        <translation>Beschränkt die Tabelle auf die Bausteine, in denen der eingegebene Text vorkommt</translation>
    </message>
    <message>
        <source>Search options</source>
        <translation>Suchoptionen</translation>
    </message>
    <message>
        <source>Chooses the columns searched and how the text is matched</source>
        <translation>Wählt die durchsuchten Spalten und die Art des Vergleichs</translation>
    </message>
    <message>
        <source>Matching chips</source>
        <translation>Passende Bausteine</translation>
    </message>
    <message>
        <source>The chips that pass the filters; the selected row is the chosen chip</source>
        <translation>Die Bausteine, die alle Filter erfüllen; die ausgewählte Zeile ist der gewählte Baustein</translation>
    </message>
    <message>
        <source>Select in table</source>
        <translation>In Tabelle auswählen</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
    <message>
        <source>Compared chips (rows that differ in bold):</source>
        <translation>Verglichene Bausteine (abweichende Zeilen fett):</translation>
    </message>
    <message>
        <source>Compared chips</source>
        <translation>Verglichene Bausteine</translation>
    </message>
    <message>
        <source>One column per chip, the rows that differ in bold; Enter or a double-click selects the column&apos;s chip in the table</source>
        <translation>Eine Spalte je Baustein, abweichende Zeilen fett; die Eingabetaste oder ein Doppelklick wählt den Baustein der Spalte in der Tabelle aus</translation>
    </message>
    <message>
        <source>Selects the chip of the current column in the table</source>
        <translation>Wählt den Baustein der aktuellen Spalte in der Tabelle aus</translation>
    </message>
    <message>
        <source>Removes the chip of the current column from the comparison</source>
        <translation>Nimmt den Baustein der aktuellen Spalte aus dem Vergleich</translation>
    </message>
    <message>
        <source>Removes every chip from the comparison</source>
        <translation>Nimmt alle Bausteine aus dem Vergleich</translation>
    </message>
    <message>
        <source>Show chips in the same package</source>
        <translation>Bausteine im selben Gehäuse zeigen</translation>
    </message>
    <message>
        <source>Add to comparison</source>
        <translation>Zum Vergleich hinzufügen</translation>
    </message>
    <message>
        <source>Remove from comparison</source>
        <translation>Aus dem Vergleich entfernen</translation>
    </message>
    <message>
        <source>&amp;Chips</source>
        <translation>&amp;Bausteine</translation>
    </message>
    <message>
        <source>&amp;Boards</source>
        <translation>&amp;Platinen</translation>
    </message>
    <message>
        <source>Chips or boards</source>
        <translation>Bausteine oder Platinen</translation>
    </message>
    <message>
        <source>Boards</source>
        <translation>Platinen</translation>
    </message>
    <message>
        <source>The boards that pass the search; the selected row&apos;s chip is the chosen chip</source>
        <translation>Die Platinen, die die Suche findet; der Baustein der gewählten Zeile ist der gewählte Baustein</translation>
    </message>
</context>
<context>
    <name>DEV::DeviceSelectorDialog</name>
    <message>
        <source>Select Device</source>
        <translation>Baustein auswählen</translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Zuletzt gewählt</translation>
    </message>
    <message>
        <source>Recent chips</source>
        <translation>Zuletzt gewählte Bausteine</translation>
    </message>
    <message>
        <source>The chips accepted last, newest first; choosing one selects it</source>
        <translation>Die zuletzt übernommenen Bausteine, der neueste zuerst; der gewählte wird in der Tabelle ausgewählt</translation>
    </message>
</context>
<context>
    <name>DEV::pimpl::RequirementsRow</name>
    <message>
        <source>At least:</source>
        <translation>Mindestens:</translation>
    </message>
    <message>
        <source>Minimum %1</source>
        <translation>Mindestens %1</translation>
    </message>
    <message>
        <source>Only chips with at least this much %1, in Kb or Mb (1Mb = 1024Kb); empty for any</source>
        <translation>Nur Bausteine mit mindestens so viel %1, in Kb oder Mb (1Mb = 1024Kb); leer für beliebig</translation>
    </message>
    <message>
        <source>Only chips with at least this many %1; empty for any</source>
        <translation>Nur Bausteine mit mindestens so vielen %1; leer für beliebig</translation>
    </message>
</context>
</TS>
