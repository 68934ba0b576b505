<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Marlix::Widgets::Curves</name>
    <message numerus="yes">
        <source>Found %n curve(s), but %1 were expected.

This can be caused for example by mismatching motion blur shutter curve and tone mapping curve files.</source>
        <translation>
            <numerusform>Found %n curve, but %1 were expected.

This can be caused for example by mismatching motion blur shutter curve and tone mapping curve files.</numerusform>
            <numerusform>Found %n curves, but %1 were expected.

This can be caused for example by mismatching motion blur shutter curve and tone mapping curve files.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::EntityWidget</name>
    <message numerus="yes">
        <source>%n more not listed</source>
        <translation>
            <numerusform>%n more not listed</numerusform>
            <numerusform>%n more not listed</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ListerPanel</name>
    <message numerus="yes">
        <source>%n objects</source>
        <translation>
            <numerusform>%n object</numerusform>
            <numerusform>%n objects</numerusform>
        </translation>
    </message>
</context>
</TS>
