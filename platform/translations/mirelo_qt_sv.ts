<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- Qt's own texts that the Swedish catalogues installed with the system leave in English,
     among those that Mirelo's dialogs, its print preview and print dialog show. -->
<TS version="2.1" language="sv_SE">
<context>
    <name>QFileDialog</name>
    <message>
        <source>Look in:</source>
        <translation>Sök i:</translation>
    </message>
    <message>
        <source>&amp;Choose</source>
        <translation>&amp;Välj</translation>
    </message>
    <message>
        <source>Show </source>
        <translation>Visa </translation>
    </message>
    <message>
        <source>&amp;New Folder</source>
        <translation>&amp;Ny mapp</translation>
    </message>
    <message>
        <source>Go back</source>
        <translation>Gå tillbaka</translation>
    </message>
    <message>
        <source>Go forward</source>
        <translation>Gå framåt</translation>
    </message>
    <message>
        <source>Go to the parent directory</source>
        <translation>Gå till föräldrakatalogen</translation>
    </message>
    <message>
        <source>Create a New Folder</source>
        <translation>Skapa en ny mapp</translation>
    </message>
    <message>
        <source>Change to list view mode</source>
        <translation>Visa som lista</translation>
    </message>
    <message>
        <source>Change to detail view mode</source>
        <translation>Visa med detaljer</translation>
    </message>
    <message>
        <source>Sidebar</source>
        <translation>Sidopanel</translation>
    </message>
    <message>
        <source>Recent Places</source>
        <translation>Senaste platser</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Filer</translation>
    </message>
    <message>
        <source>List of places and bookmarks</source>
        <translation>Platser och bokmärken</translation>
    </message>
    <message>
        <source>Are you sure you want to delete '%1'?</source>
        <translation>Är du säker på att du vill ta bort "%1"?</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Ta bort</translation>
    </message>
    <message>
        <source>Computer</source>
        <translation>Dator</translation>
    </message>
</context>
<context>
    <name>QFileSystemModel</name>
    <message>
        <source>Computer</source>
        <translation>Dator</translation>
    </message>
    <message>
        <source>Invalid filename</source>
        <translation>Ogiltigt filnamn</translation>
    </message>
    <message>
        <source>&lt;b&gt;The name "%1" cannot be used.&lt;/b&gt;&lt;p&gt;Try using another name, with fewer characters or no punctuation marks.</source>
        <translation>&lt;b&gt;Namnet "%1" kan inte användas.&lt;/b&gt;&lt;p&gt;Försök med ett annat namn, med färre tecken eller utan skiljetecken.</translation>
    </message>
</context>
<context>
    <name>QAbstractFileIconProvider</name>
    <message>
        <source>File</source>
        <translation>Fil</translation>
    </message>
    <message>
        <source>File Folder</source>
        <translation>Mapp</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Mapp</translation>
    </message>
    <message>
        <source>Drive</source>
        <translation>Enhet</translation>
    </message>
    <message>
        <source>Shortcut</source>
        <translation>Genväg</translation>
    </message>
    <message>
        <source>Unknown</source>
        <translation>Okänd</translation>
    </message>
</context>
<context>
    <name>QPlatformTheme</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Avbryt</translation>
    </message>
    <message>
        <source>&amp;Yes</source>
        <translation>&amp;Ja</translation>
    </message>
    <message>
        <source>&amp;No</source>
        <translation>&amp;Nej</translation>
    </message>
    <message>
        <source>Yes to &amp;All</source>
        <translation>Ja till &amp;alla</translation>
    </message>
    <message>
        <source>N&amp;o to All</source>
        <translation>N&amp;ej till alla</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Stäng</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Spara</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Öppna</translation>
    </message>
    <message>
        <source>Apply</source>
        <translation>Verkställ</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hjälp</translation>
    </message>
</context>
<context>
    <name>QWidgetTextControl</name>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Ångra</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Gör om</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>Klipp &amp;ut</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopiera</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>Klistra &amp;in</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Ta bort</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Markera alla</translation>
    </message>
    <message>
        <source>Copy &amp;Link Location</source>
        <translation>Kopiera &amp;länkadress</translation>
    </message>
</context>
<context>
    <name>QPrintPreviewDialog</name>
    <message>
        <source>Print Preview</source>
        <translation>Förhandsgranskning</translation>
    </message>
    <message>
        <source>%1%</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Print</source>
        <translation>Skriv ut</translation>
    </message>
    <message>
        <source>Page setup</source>
        <translation>Utskriftsformat</translation>
    </message>
    <message>
        <source>Page Setup</source>
        <translation>Utskriftsformat</translation>
    </message>
    <message>
        <source>Fit width</source>
        <translation>Anpassa till bredden</translation>
    </message>
    <message>
        <source>Fit page</source>
        <translation>Anpassa till sidan</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Zooma in</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Zooma ut</translation>
    </message>
    <message>
        <source>First page</source>
        <translation>Första sidan</translation>
    </message>
    <message>
        <source>Previous page</source>
        <translation>Föregående sida</translation>
    </message>
    <message>
        <source>Next page</source>
        <translation>Nästa sida</translation>
    </message>
    <message>
        <source>Last page</source>
        <translation>Sista sidan</translation>
    </message>
    <message>
        <source>Show single page</source>
        <translation>Visa en sida i taget</translation>
    </message>
    <message>
        <source>Show facing pages</source>
        <translation>Visa uppslag</translation>
    </message>
    <message>
        <source>Show overview of all pages</source>
        <translation>Visa alla sidor</translation>
    </message>
    <message>
        <source>Export to PDF</source>
        <translation>Exportera till PDF</translation>
    </message>
</context>
<context>
    <name>QPrintDialog</name>
    <message>
        <source>&amp;Print</source>
        <translation>&amp;Skriv ut</translation>
    </message>
    <message>
        <source>&amp;Options &gt;&gt;</source>
        <translation>&amp;Alternativ &gt;&gt;</translation>
    </message>
    <message>
        <source>&amp;Options &lt;&lt;</source>
        <translation>&amp;Alternativ &lt;&lt;</translation>
    </message>
    <message>
        <source>Local file</source>
        <translation>Lokal fil</translation>
    </message>
    <message>
        <source>Write PDF file</source>
        <translation>Skriv en PDF-fil</translation>
    </message>
    <message>
        <source>Print to File (PDF)</source>
        <translation>Skriv ut till fil (PDF)</translation>
    </message>
    <message>
        <source>All Pages</source>
        <translation>Alla sidor</translation>
    </message>
    <message>
        <source>Odd Pages</source>
        <translation>Udda sidor</translation>
    </message>
    <message>
        <source>Even Pages</source>
        <translation>Jämna sidor</translation>
    </message>
    <message>
        <source>Left to Right, Top to Bottom</source>
        <translation>Vänster till höger, uppifrån och ned</translation>
    </message>
    <message>
        <source>Left to Right, Bottom to Top</source>
        <translation>Vänster till höger, nedifrån och upp</translation>
    </message>
    <message>
        <source>Right to Left, Top to Bottom</source>
        <translation>Höger till vänster, uppifrån och ned</translation>
    </message>
    <message>
        <source>Right to Left, Bottom to Top</source>
        <translation>Höger till vänster, nedifrån och upp</translation>
    </message>
    <message>
        <source>Top to Bottom, Left to Right</source>
        <translation>Uppifrån och ned, vänster till höger</translation>
    </message>
    <message>
        <source>Top to Bottom, Right to Left</source>
        <translation>Uppifrån och ned, höger till vänster</translation>
    </message>
    <message>
        <source>Bottom to Top, Left to Right</source>
        <translation>Nedifrån och upp, vänster till höger</translation>
    </message>
    <message>
        <source>Bottom to Top, Right to Left</source>
        <translation>Nedifrån och upp, höger till vänster</translation>
    </message>
    <message>
        <source>Invalid Pages Definition</source>
        <translation>Ogiltiga sidor</translation>
    </message>
    <message>
        <source>%1 does not follow the correct syntax. Please use ',' to separate ranges and pages, '-' to define ranges and make sure ranges do not intersect with each other.</source>
        <translation>%1 är inte rätt skrivet. Skilj sidor och intervall åt med ",", ange ett intervall med "-" och se till att inga intervall överlappar varandra.</translation>
    </message>
    <message>
        <source>The 'From' value cannot be greater than the 'To' value.</source>
        <translation>Värdet "från" kan inte vara större än värdet "till".</translation>
    </message>
    <message>
        <source>%1 is a directory.
Please choose a different file name.</source>
        <translation>%1 är en katalog.
Välj ett annat filnamn.</translation>
    </message>
    <message>
        <source>Duplex Settings Conflicts</source>
        <translation>Motstridiga inställningar för dubbelsidig utskrift</translation>
    </message>
    <message>
        <source>There are conflicts in duplex settings. Do you want to fix them?</source>
        <translation>Inställningarna för dubbelsidig utskrift motsäger varandra. Vill du rätta dem?</translation>
    </message>
    <message>
        <source>Options 'Pages Per Sheet' and 'Page Set' cannot be used together.
Please turn one of those options off.</source>
        <translation>Alternativen "Sidor per ark" och "Sidurval" kan inte användas tillsammans.
Stäng av ett av dem.</translation>
    </message>
</context>
<context>
    <name>QPrintWidget</name>
    <message>
        <source>&amp;Name:</source>
        <translation>&amp;Namn:</translation>
    </message>
    <message>
        <source>P&amp;roperties</source>
        <translation>&amp;Egenskaper</translation>
    </message>
    <message>
        <source>Location:</source>
        <translation>Plats:</translation>
    </message>
    <message>
        <source>Preview</source>
        <translation>Förhandsgranska</translation>
    </message>
    <message>
        <source>Type:</source>
        <translation>Typ:</translation>
    </message>
    <message>
        <source>Output &amp;file:</source>
        <translation>Utdata&amp;fil:</translation>
    </message>
</context>
<context>
    <name>QPrintSettingsOutput</name>
    <message>
        <source>Copies:</source>
        <translation>Kopior:</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Sidor</translation>
    </message>
    <message>
        <source>Current Page</source>
        <translation>Aktuell sida</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>Alternativ</translation>
    </message>
    <message>
        <source>Output Settings</source>
        <translation>Utskriftsinställningar</translation>
    </message>
    <message>
        <source>Reverse</source>
        <translation>Omvänd ordning</translation>
    </message>
    <message>
        <source>Color Mode</source>
        <translation>Färgläge</translation>
    </message>
    <message>
        <source>Color</source>
        <translation>Färg</translation>
    </message>
    <message>
        <source>Grayscale</source>
        <translation>Gråskala</translation>
    </message>
    <message>
        <source>Double Sided Printing</source>
        <translation>Dubbelsidig utskrift</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Av</translation>
    </message>
    <message>
        <source>Long side binding</source>
        <translation>Bindning längs långsidan</translation>
    </message>
    <message>
        <source>Short side binding</source>
        <translation>Bindning längs kortsidan</translation>
    </message>
    <message>
        <source>Page Set:</source>
        <translation>Sidurval:</translation>
    </message>
    <message>
        <source>Specify pages or ranges separated by commas. Ranges are specified by two numbers separated by a hyphen. E.g: 3,5-7,9 prints pages 3, 5, 6, 7 and 9.</source>
        <translation>Ange sidor eller intervall åtskilda av kommatecken. Ett intervall anges med två tal och ett bindestreck mellan dem. Till exempel skriver 3,5-7,9 ut sidorna 3, 5, 6, 7 och 9.</translation>
    </message>
</context>
<context>
    <name>QPrintPropertiesDialog</name>
    <message>
        <source>Printer Properties</source>
        <translation>Skrivaregenskaper</translation>
    </message>
    <message>
        <source>Job Options</source>
        <translation>Utskriftsjobb</translation>
    </message>
    <message>
        <source>Advanced Option Conflicts</source>
        <translation>Motstridiga avancerade alternativ</translation>
    </message>
    <message>
        <source>Page Setup Conflicts</source>
        <translation>Motstridiga sidinställningar</translation>
    </message>
    <message>
        <source>There are conflicts in some advanced options. Do you want to fix them?</source>
        <translation>Några avancerade alternativ motsäger varandra. Vill du rätta dem?</translation>
    </message>
    <message>
        <source>There are conflicts in page setup options. Do you want to fix them?</source>
        <translation>Några sidinställningar motsäger varandra. Vill du rätta dem?</translation>
    </message>
</context>
<context>
    <name>QPrintPropertiesWidget</name>
    <message>
        <source>Page</source>
        <translation>Sida</translation>
    </message>
    <message>
        <source>Advanced</source>
        <translation>Avancerat</translation>
    </message>
    <message>
        <source>There are conflicts in some options. Please fix them.</source>
        <translation>Några alternativ motsäger varandra. Rätta dem.</translation>
    </message>
</context>
<context>
    <name>QPageSetupWidget</name>
    <message>
        <source>Paper</source>
        <translation>Papper</translation>
    </message>
    <message>
        <source>Custom</source>
        <translation>Anpassad</translation>
    </message>
    <message>
        <source>Width:</source>
        <translation>Bredd:</translation>
    </message>
    <message>
        <source>Height:</source>
        <translation>Höjd:</translation>
    </message>
    <message>
        <source>Orientation</source>
        <translation>Orientering</translation>
    </message>
    <message>
        <source>Reverse portrait</source>
        <translation>Omvänt stående</translation>
    </message>
    <message>
        <source>Reverse landscape</source>
        <translation>Omvänt liggande</translation>
    </message>
    <message>
        <source>Margins</source>
        <translation>Marginaler</translation>
    </message>
    <message>
        <source>top margin</source>
        <translation>övre marginal</translation>
    </message>
    <message>
        <source>bottom margin</source>
        <translation>nedre marginal</translation>
    </message>
    <message>
        <source>left margin</source>
        <translation>vänster marginal</translation>
    </message>
    <message>
        <source>right margin</source>
        <translation>höger marginal</translation>
    </message>
    <message>
        <source>Page Layout</source>
        <translation>Sidlayout</translation>
    </message>
    <message>
        <source>Page order:</source>
        <translation>Sidordning:</translation>
    </message>
    <message>
        <source>Pages per sheet:</source>
        <translation>Sidor per ark:</translation>
    </message>
    <message>
        <source>Millimeters (mm)</source>
        <translation>Millimeter (mm)</translation>
    </message>
    <message>
        <source>Inches (in)</source>
        <translation>Tum (in)</translation>
    </message>
    <message>
        <source>Points (pt)</source>
        <translation>Punkter (pt)</translation>
    </message>
</context>
<context>
    <name>QCupsJobWidget</name>
    <message>
        <source>Job</source>
        <translation>Jobb</translation>
    </message>
    <message>
        <source>Job Control</source>
        <translation>Jobbhantering</translation>
    </message>
    <message>
        <source>Scheduled printing:</source>
        <translation>Schemalagd utskrift:</translation>
    </message>
    <message>
        <source>Print Immediately</source>
        <translation>Skriv ut genast</translation>
    </message>
    <message>
        <source>Hold Indefinitely</source>
        <translation>Vänta tills vidare</translation>
    </message>
    <message>
        <source>Day (06:00 to 17:59)</source>
        <translation>Dag (06:00 till 17:59)</translation>
    </message>
    <message>
        <source>Night (18:00 to 05:59)</source>
        <translation>Natt (18:00 till 05:59)</translation>
    </message>
    <message>
        <source>Second Shift (16:00 to 23:59)</source>
        <translation>Andra skiftet (16:00 till 23:59)</translation>
    </message>
    <message>
        <source>Third Shift (00:00 to 07:59)</source>
        <translation>Tredje skiftet (00:00 till 07:59)</translation>
    </message>
    <message>
        <source>Weekend (Saturday to Sunday)</source>
        <translation>Helg (lördag till söndag)</translation>
    </message>
    <message>
        <source>Specific Time</source>
        <translation>Vid en viss tid</translation>
    </message>
    <message>
        <source>Billing information:</source>
        <translation>Debiteringsuppgifter:</translation>
    </message>
    <message>
        <source>Job priority:</source>
        <translation>Jobbets prioritet:</translation>
    </message>
    <message>
        <source>Banner Pages</source>
        <translation>Försättsblad</translation>
    </message>
    <message>
        <source>Start:</source>
        <translation>Början:</translation>
    </message>
    <message>
        <source>End:</source>
        <translation>Slut:</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Inget</translation>
    </message>
    <message>
        <source>Standard</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>Unclassified</source>
        <translation>Ej klassificerad</translation>
    </message>
    <message>
        <source>Confidential</source>
        <translation>Konfidentiell</translation>
    </message>
    <message>
        <source>Classified</source>
        <translation>Klassificerad</translation>
    </message>
    <message>
        <source>Secret</source>
        <translation>Hemlig</translation>
    </message>
    <message>
        <source>Top Secret</source>
        <translation>Kvalificerat hemlig</translation>
    </message>
</context>
<context>
    <name>QCupsPrinterSupport</name>
    <message>
        <source>Authentication Needed</source>
        <translation>Inloggning krävs</translation>
    </message>
    <message>
        <source>Authentication needed to use %1.</source>
        <translation>Inloggning krävs för att använda %1.</translation>
    </message>
    <message>
        <source>Authentication needed to use %1 on %2.</source>
        <translation>Inloggning krävs för att använda %1 på %2.</translation>
    </message>
    <message>
        <source>Username:</source>
        <translation>Användarnamn:</translation>
    </message>
    <message>
        <source>Password:</source>
        <translation>Lösenord:</translation>
    </message>
</context>
</TS>
