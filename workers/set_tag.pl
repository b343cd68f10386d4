#!/usr/bin/env perl
#
# Palomet's write worker: sets tags of files through ExifTool.
#
#   set_tag.pl PATH DESTINATION TAG BASE64-VALUE [TAG BASE64-VALUE ...]
#       One file, then exit. DESTINATION "<none>" rewrites PATH itself, through a temporary copy
#       beside it and a rename; any other DESTINATION is a new file that receives PATH with the
#       tags set, PATH itself untouched (Palomet then puts it in place, with the file's
#       attributes). Exit status 0 when written, 1 when refused or failed (one short line on
#       standard error), 2 for a malformed call.
#
#   set_tag.pl --serve [--record-undo]
#       Long-running: one request per line on standard input, the fields of a one-shot call
#       separated by single spaces, PATH and DESTINATION in base64 as well. Each answer is the
#       exit status a one-shot call would have had, on a line of its own, then its message lines,
#       then the terminator with nothing behind it. Exits at the end of its input.
#       With --record-undo, a successful answer lists what the write replaced, one
#       "undo TAG VALUE" line per tag it touched (exact pairs, below), so that writing those
#       pairs puts the file's metadata back as it was.
#
# Exact pairs: a TAG of the form "=Group:Name" is written as named, without the routing of
# positions and place names. Its VALUE (after the base64 of the transport) is "-" to delete the
# tag, or the tag's values as ExifTool converts them for storage ("#" values), each in base64,
# separated by commas. "=Group:*" with "-" deletes a whole group that a write had created;
# "=File:*" with "-" stands for removing a file that a write had made, which Palomet does itself.
#
# Values arrive in base64 so that line feeds and any character survive; once decoded they are
# UTF-8 text.
#
use strict;
use warnings;

use Cwd ();
use FindBin;
use MIME::Base64 qw(decode_base64 encode_base64);

# Only the ExifTool that ships with the application: its version is the one the writes were
# checked against, whatever else the system has installed.
my $libDir;
BEGIN {
    $libDir = "$FindBin::RealBin/exiftool/lib";
    unshift @INC, $libDir;
}
use Image::ExifTool;

if ($INC{'Image/ExifTool.pm'} ne "$libDir/Image/ExifTool.pm") {
    print STDERR "Error: wrong ExifTool library $INC{'Image/ExifTool.pm'}\n";
    exit 2;
}

my $TERMINATOR = '-<-do-not_use_thisInMetaData-Finished-->';

# File types whose GPS position is one QuickTime coordinate triple instead of EXIF GPS tags.
my %quickTimeFamily = map { $_ => 1 } qw(MOV MP4 M4V M4A M4B M4P 3GP 3G2 3GPP MQV QT QTIF
                                          F4V F4A F4B F4P);

# File types that hold no EXIF or no IPTC, where ExifTool would drop such a tag without a word.
# Their position and place names go to XMP. A type missing here is still caught: a tag that
# did not land is tried once more through XMP before the write is refused.
my %withoutEXIF = map { $_ => 1 } qw(GIF PDF PPM PGM PBM XMP XML X3F DR4 VRD CRW EPS PS AI
                                      INDD SVG);
my %withoutIPTC = map { $_ => 1 } qw(MOV MP4 M4A HEIC HEIF AVIF CR3 CRX RIFF WEBP GIF JXL PDF
                                      PPM PGM PBM XMP XML X3F DR4 VRD CRW SVG);

# The four place names: the IPTC tag, the XMP tag and the field of a shown location.
my %placeFields = (
    'city'                        => [ 'City', 'XMP-photoshop:City', 'City' ],
    'province-state'              => [ 'Province-State', 'XMP-photoshop:State', 'ProvinceState' ],
    'state'                       => [ 'Province-State', 'XMP-photoshop:State', 'ProvinceState' ],
    'sub-location'                => [ 'Sub-location', 'XMP-iptcCore:Location', 'Sublocation' ],
    'location'                    => [ 'Sub-location', 'XMP-iptcCore:Location', 'Sublocation' ],
    'country'                     => [ 'Country-PrimaryLocationName', 'XMP-photoshop:Country',
                                       'CountryName' ],
    'country-primarylocationname' => [ 'Country-PrimaryLocationName', 'XMP-photoshop:Country',
                                       'CountryName' ],
);

# A refusal: the exit status and the line for the user.
sub fail
{
    my ($status, $message) = @_;
    $message =~ s/\s+$//;
    die { status => $status, message => $message };
}

sub isNumber
{
    my ($text) = @_;
    return $text =~ /^\s*[+-]?(?:\d+(?:\.\d*)?|\.\d+)(?:[eE][+-]?\d+)?\s*$/;
}

# One writer for the worker's life; each request clears its new values first.
my $writer = Image::ExifTool->new;
my $recordUndo = 0;

# Groups that a write can create whole, and what deletes one again.
my %createdGroupDeletion = (IFD0 => 'EXIF:*', ExifIFD => 'ExifIFD:*', GPS => 'GPS:*',
                            Photoshop => 'Photoshop:*', IPTC => 'IPTC:*', XMP => 'XMP:*');

# Sets the tags of one file. Returns the message of a refusal, or nothing on success.
sub writeFile
{
    my ($path, $destination, @encoded) = @_;
    fail(2, 'Error: tags and values must come in pairs') if @encoded % 2;
    # An XMP sidecar that does not exist yet is made from the new values alone.
    my $create = (not -e $path and not -l $path and $path =~ /\.xmp$/i and $destination ne '<none>');
    unless ($create) {
        fail(1, 'Error: File not found') unless -e $path;
        # ExifTool would replace a symbolic link by a file of its own; write the file it points to.
        $path = Cwd::abs_path($path) if -l $path;
        fail(1, 'Error: Not a regular file') unless -f $path;
        # The user made the file read-only, so leave it alone. A file without any write bit counts
        # as read-only even for root.
        fail(1, 'Error: File is read-only') unless -w $path and (stat _)[2] & 0222;
    }

    my @pairs;
    for (my $i = 0; $i < @encoded; $i += 2) {
        my $value = decode_base64($encoded[$i + 1]);
        push @pairs, { tag => $encoded[$i], value => $value };
    }
    # Nothing asked, nothing to do: the file stays as it is.
    return unless @pairs;

    my $fileType = Image::ExifTool::GetFileType($path) || '';
    my ($extension) = $path =~ /\.([^.\/]+)$/;
    my $request = {
        path       => $path,
        fileType   => $fileType,
        quickTime  => (defined $extension && $quickTimeFamily{uc $extension}) ? 1 : 0,
        noEXIF     => $withoutEXIF{$fileType} ? 1 : 0,
        noIPTC     => $withoutIPTC{$fileType} ? 1 : 0,
        pairs      => \@pairs,
        # An undo writes exact pairs; what reverses it is known already.
        exact      => (grep { $$_{tag} =~ /^=/ } @pairs) ? 1 : 0,
        create     => $create,
    };

    my $inPlace = $destination eq '<none>';
    if ($inPlace) {
        my ($directory, $name) = $path =~ m{^(.*/)?([^/]+)$};
        $destination = ($directory // '') . ".$name.set_tag-$$";
    }
    fail(1, 'Error: Temporary file already exists') if -e $destination;

    my $missing = writeOnce($request, $destination);
    if (@$missing) {
        # Tried once more with what did not land sent to XMP, where every writable type that
        # holds position or place names keeps them.
        my $redirected = 0;
        foreach my $pair (@$missing) {
            my $kind = $$pair{kind};
            if (($kind eq 'coordinate' or $kind eq 'reference') and not $$request{noEXIF}) {
                $$request{noEXIF} = $redirected = 1;
            } elsif ($kind eq 'place' and not $$request{noIPTC}) {
                $$request{noIPTC} = $redirected = 1;
            }
        }
        if ($redirected) {
            unlink $destination;
            $missing = writeOnce($request, $destination);
        }
    }
    if (@$missing) {
        unlink $destination;
        my %seen;
        my @names = grep { !$seen{$_}++ } map { $$_{name} } @$missing;
        my $what = $fileType ? "$fileType files" : 'This file';
        fail(1, "Error: $what can't hold " . join(', ', @names));
    }

    my @undo = ($recordUndo and not $$request{exact}) ? undoPairs($request) : ();
    if ($inPlace) {
        $writer->CopyFileAttrs($path, $destination);
        unless (rename $destination, $path) {
            my $cause = "$!";
            unlink $destination;
            fail(1, "Error: Error renaming temporary file ($cause)");
        }
    }
    return @undo;
}

# The exact pairs that put back what the last write of the request replaced: every tag that
# ExifTool's log says it added, changed or deleted, with the values the original holds (an absent
# tag as "-"), and a group that the write created is deleted whole, which also takes what ExifTool
# adds by itself inside it (GPS version, a new XMP packet with its toolkit).
sub undoPairs
{
    my ($request) = @_;
    # A file the write made goes again as a whole.
    return ('=File:*', '-') if $$request{create};
    my $log = $$request{log};
    my (%created, @touched, %seenTag);
    foreach my $line (split /\n/, $log) {
        if ($line =~ /^\s*Creating (\w+)\s*$/ and $createdGroupDeletion{$1}) {
            $created{$1} = 1;
        } elsif ($line =~ /^\s*[-+] ([\w-]+):([\w-]+) = /) {
            push @touched, [$1, $2] unless $seenTag{"$1:$2"}++;
        }
    }
    # Tags inside a created group go with it.
    my %within = (IFD0 => [qw(IFD0 ExifIFD GPS InteropIFD IFD1)], ExifIFD => ['ExifIFD'],
                  GPS => ['GPS'], Photoshop => [qw(Photoshop IPTC)], IPTC => ['IPTC'],
                  XMP => [qr/^XMP/]);
    my @pairs;
    my %coveredBy;
    foreach my $group (sort keys %created) {
        push @pairs, "=$createdGroupDeletion{$group}", '-';
    }
    my @left = grep {
        my $group = $$_[0];
        not grep { my $g = $_; grep { ref $_ ? $group =~ $_ : $group eq $_ } @{$within{$g}} }
            keys %created
    } @touched;
    return @pairs unless @left;

    my $info = Image::ExifTool->new;
    $info->Options(Charset => 'UTF8', List => 1, Duplicates => 1, Struct => 0, Binary => 1,
                   FastScan => 0);
    $info->ExtractInfo($$request{path});
    my %original;
    foreach my $tag ($info->GetFoundTags('File')) {
        my $key = $info->GetGroup($tag, 1) . ':' . Image::ExifTool::GetTagName($tag);
        next if exists $original{$key};
        my $value = $info->GetValue($tag, 'ValueConv');
        next unless defined $value;
        $original{$key} = [ map { ref $_ eq 'SCALAR' ? $$_ : $_ }
                            ref $value eq 'ARRAY' ? @$value : ($value) ];
    }
    foreach my $entry (@left) {
        my $key = "$$entry[0]:$$entry[1]";
        # The log names a tag of a language ("GPSCoordinates-und") where reading gives the plain
        # name; written plain, it takes that language again.
        $key = "$$entry[0]:$1" if not $original{$key} and $$entry[1] =~ /^(.+)-[a-z]{2,3}(?:-[A-Z]{2})?$/
                                  and $original{"$$entry[0]:$1"};
        my $values = $original{$key};
        push @pairs, "=$key",
            $values ? join(',', map { encode_base64(encodeBytes($_), '') } @$values) : '-';
    }
    return @pairs;
}

# A value as the bytes ExifTool stores it from: text that Perl holds as characters goes as UTF-8.
sub encodeBytes
{
    my ($value) = @_;
    utf8::encode($value) if utf8::is_utf8($value);
    return $value;
}

# What the file holds now, read at most once per request and only when a decision needs it:
# IPTC as the bytes stored, XMP structures whole.
sub currentInfo
{
    my ($request) = @_;
    return $$request{current} if $$request{current};
    my $reader = Image::ExifTool->new;
    $reader->Options(Charset => 'UTF8', CharsetIPTC => 'UTF8', List => 1, Duplicates => 1,
                     Struct => 1, FastScan => 0);
    $reader->ExtractInfo($$request{path});
    return $$request{current} = $reader;
}

# A coordinate triple for QuickTime keeps whatever altitude the file had.
sub existingQuickTimeCoordinates
{
    my ($request) = @_;
    my $info = currentInfo($request);
    foreach my $group (qw(Keys UserData ItemList)) {
        foreach my $tag ($info->GetFoundTags('File')) {
            next unless Image::ExifTool::GetTagName($tag) eq 'GPSCoordinates';
            next unless $info->GetGroup($tag, 1) eq $group;
            my $value = $info->GetValue($tag, 'ValueConv');
            my @parts = split ' ', (defined $value ? $value : '');
            return @parts if @parts >= 2;
        }
    }
    return ();
}

# How many places the file's XMP lists as shown.
sub shownLocationCount
{
    my ($request) = @_;
    my $info = currentInfo($request);
    my $count = 0;
    foreach my $tag ($info->GetFoundTags('File')) {
        next unless Image::ExifTool::GetTagName($tag) eq 'LocationShown';
        my $value = $info->GetValue($tag, 'ValueConv');
        $count += ref $value eq 'ARRAY' ? scalar @$value : 1;
    }
    return $count;
}

# The new values of one request on the shared writer. Each entry of @targets is a tag for
# SetNewValue, its options, and the name the write reports when it lands.
sub setValue
{
    my ($tag, $value, @options) = @_;
    my ($count, $error) = $writer->SetNewValue($tag, $value, @options);
    fail(1, "Error: $error") if $error;
    fail(1, "Error: Can't write $tag") unless $count;
}

# Writes the file once, the pairs routed as the request says. Returns the pairs that did not
# land, each with its kind and name.
sub writeOnce
{
    my ($request, $destination) = @_;
    # Standard output is the conversation with Palomet: nothing else may ever reach it.
    $writer->Options(Verbose => 0, TextOut => \*STDERR);
    $writer->SetNewValue();
    # A JPEG XL codestream takes metadata only inside a container; wrapping it changes nothing
    # in the image.
    $writer->Options(Charset => 'UTF8', IgnoreMinorErrors => $$request{fileType} eq 'JXL' ? 1 : 0);

    my @routed;         # each: kind, name, names it may land as
    my (%iptcText, $quickTimeLatitude, $quickTimeLongitude);
    foreach my $pair (@{$$request{pairs}}) {
        my ($tag, $value) = @$pair{qw(tag value)};
        if ($tag =~ /^=([\w-]+):([\w-]+|\*)$/) {
            my $exact = "$1:$2";
            if ($value eq '-') {
                my ($count, $error) = $writer->SetNewValue($exact, undef, Protected => 1);
                fail(1, "Error: $error") if $error and not $count;
            } else {
                my @values = map { decode_base64($_) } split /,/, $value, -1;
                setValue($exact, @values > 1 ? \@values : $values[0], Type => 'ValueConv',
                         Protected => 1);
            }
            next;
        }
        my ($group, $name, $numeric) = $tag =~ /^(?:([\w-]+):)?([\w-]+)(#?)$/;
        fail(2, "Error: Invalid tag name $tag") unless defined $name;
        $group //= '';

        if ($name =~ /^GPS(Latitude|Longitude)$/i) {
            my $half = ucfirst lc $1;
            my $limit = $half eq 'Latitude' ? 90 : 180;
            fail(1, "Error: GPS$half must be a number of degrees, not \"$value\"")
                unless isNumber($value);
            fail(1, "Error: GPS$half must lie between -$limit and $limit degrees, not \"$value\"")
                if abs($value) > $limit;
            my $entry = { kind => 'coordinate', name => "GPS$half" };
            if ($group =~ /^XMP/i) {
                setValue("XMP-exif:GPS$half#", $value + 0);
                $$entry{lands} = ["GPS$half"];
            } elsif ($$request{quickTime}) {
                $half eq 'Latitude' ? ($quickTimeLatitude = $value) : ($quickTimeLongitude = $value);
                $$entry{lands} = ['GPSCoordinates'];
            } elsif ($$request{noEXIF}) {
                # XMP carries the hemisphere in the number; no reference is written.
                setValue("XMP-exif:GPS$half#", $value + 0);
                $$entry{lands} = ["GPS$half"];
            } else {
                # The EXIF coordinate is unsigned; its hemisphere comes with its reference pair.
                setValue("GPS:GPS$half#", abs($value));
                $$entry{lands} = ["GPS$half"];
            }
            push @routed, $entry;
        } elsif ($name =~ /^GPS(Latitude|Longitude)Ref$/i) {
            # Only EXIF keeps a separate hemisphere.
            next if $$request{quickTime} or $$request{noEXIF};
            setValue($group ? $tag : "GPS:$tag", $value);
            push @routed, { kind => 'reference', name => $name, lands => [$name] };
        } elsif (my $field = $placeFields{lc $name} and ($group eq '' or $group =~ /^(MWG|IPTC)$/i)) {
            my ($iptcName, $xmpTag, $shownField) = @$field;
            my $entry = { kind => 'place', name => $group ? "$group:$name" : $name, lands => [] };
            my $mwg = uc $group eq 'MWG';
            my $toXMP = $mwg || $$request{noIPTC};
            unless ($$request{noIPTC}) {
                # The MWG way edits an IPTC record that exists; a plain name makes one.
                setValue("IPTC:$iptcName", $value, $mwg ? (EditGroup => 1) : ());
                push @{$$entry{lands}}, $iptcName;
                $iptcText{$iptcName} = { value => $value, creates => !$mwg };
                # The digest tells readers whether IPTC and XMP agree; keep it true.
                my @quiet;
                @quiet = $writer->SetNewValue('Photoshop:IPTCDigest', 'old', Protected => 1,
                                              DelValue => 1);
                @quiet = $writer->SetNewValue('Photoshop:IPTCDigest', 'new', Protected => 1);
            }
            if ($toXMP) {
                setValue($xmpTag, $value);
                push @{$$entry{lands}}, $xmpTag =~ s/^.*://r;
                # The shown location is kept in step only while there is at most one: a list
                # of several places is the user's and stays as it is.
                if (shownLocationCount($request) <= 1) {
                    setValue("XMP-iptcExt:LocationShown$shownField", $value);
                    push @{$$entry{lands}}, "LocationShown$shownField";
                }
            }
            push @routed, $entry;
        } elsif (uc $group eq 'MWG') {
            fail(1, "Error: Can't write $tag");
        } else {
            setValue($tag, $value);
            push @routed, { kind => 'other', name => $name, lands => [$name] };
            $iptcText{$name} = { value => $value, creates => 1 } if $group eq '' || $group =~ /^IPTC$/i;
        }
    }

    if (defined $quickTimeLatitude or defined $quickTimeLongitude) {
        my @existing = existingQuickTimeCoordinates($request);
        my $latitude = defined $quickTimeLatitude ? $quickTimeLatitude : $existing[0];
        my $longitude = defined $quickTimeLongitude ? $quickTimeLongitude : $existing[1];
        fail(1, 'Error: GPS coordinates need both latitude and longitude')
            unless defined $latitude and defined $longitude;
        my $coordinates = ($latitude + 0) . ' ' . ($longitude + 0);
        $coordinates .= " $existing[2]" if @existing >= 3;
        setValue("$_:GPSCoordinates#", $coordinates) foreach qw(Keys UserData ItemList);
    }

    keepIPTCText($request, \%iptcText) unless $$request{noIPTC};

    # ExifTool tells each tag it writes on its verbose output; that is how a tag that a format
    # can't hold is told from one that landed.
    my $log = '';
    open my $logHandle, '>', \$log or fail(1, 'Error: no memory for the write log');
    $writer->Options(Verbose => 2, TextOut => $logHandle);
    $! = 0;
    my $result = $writer->WriteInfo($$request{create} ? undef : $$request{path}, $destination);
    my $cause = "$!";
    $writer->Options(Verbose => 0, TextOut => \*STDERR);
    close $logHandle;
    $$request{log} = $log;
    my $error = $writer->GetValue('Error');
    if ($result == 0 or $error) {
        unlink $destination;
        $error = 'Error writing file' unless $error;
        # ExifTool names the file step that failed but not why; the system's reason tells a full
        # disk or a refused folder apart.
        $error =~ s/:\s*\Q$$request{path}\E\S*//;
        $error =~ s/:?\s*-?\s*\Q$destination\E//;
        $error .= " ($cause)" if $cause and $error =~ /^Error (?:creating|writing|renaming|opening)/;
        fail(1, "Error: $error");
    }
    my %written;
    $written{lc $1} = 1 while $log =~ /^\s*\+ (?:[\w-]+:)?([\w-]+) = /mg;
    return [ grep { not grep { $written{lc $_} } @{$$_{lands}} } @routed ];
}

# IPTC stores Latin-1 unless told otherwise, which would turn other characters into question
# marks. Where a value outside Latin-1 goes into IPTC, the record is declared UTF-8, and every
# value the write leaves alone is stored again as UTF-8 so that it reads as the same characters:
# bytes that are valid UTF-8 were meant as UTF-8 (many programs write it undeclared), the rest
# is Latin-1.
sub keepIPTCText
{
    my ($request, $iptcText) = @_;
    my $needsUTF8 = 0;
    foreach my $name (keys %$iptcText) {
        next unless defined $writer->GetNewValue("IPTC:$name");
        my $text = $$iptcText{$name}{value};
        utf8::decode($text);
        $needsUTF8 = 1 if $text =~ /[^\x00-\xff]/;
    }
    return unless $needsUTF8;

    my $info = currentInfo($request);
    my @iptcTags = grep { $info->GetGroup($_, 0) eq 'IPTC' } $info->GetFoundTags('File');
    my ($charset) = map { $info->GetValue($_, 'ValueConv') }
        grep { Image::ExifTool::GetTagName($_) eq 'CodedCharacterSet' } @iptcTags;
    return if defined $charset && $charset =~ /^\x1b%G$/;
    # An edit of an existing record only, where there is none, makes none.
    my $createsIPTC = grep { $$iptcText{$_}{creates} } keys %$iptcText;
    return unless @iptcTags or $createsIPTC;

    setValue('IPTC:CodedCharacterSet', 'UTF8', Protected => 1);
    my %seen;
    foreach my $tag (@iptcTags) {
        my $name = Image::ExifTool::GetTagName($tag);
        next if $seen{$name}++ or $name eq 'CodedCharacterSet';
        # Whatever this write sets keeps its new value.
        next if defined $writer->GetNewValue("IPTC:$name");
        my @values = map { $info->GetValue($_, 'ValueConv') }
            grep { Image::ExifTool::GetTagName($_) eq $name } @iptcTags;
        @values = map { ref $_ eq 'ARRAY' ? @$_ : $_ } @values;
        next unless grep { defined $_ and !ref $_ and /[\x80-\xff]/ } @values;
        foreach my $value (@values) {
            next if ref $value or not defined $value;
            my $copy = $value;
            next if utf8::decode($copy);
            utf8::upgrade($value);
            utf8::encode($value);
        }
        setValue("IPTC:$name", @values > 1 ? \@values : $values[0]);
    }
}

# Runs one request; returns the exit status and the message of a one-shot call.
sub handle
{
    my @arguments = @_;
    my @undo;
    my $outcome = eval { @undo = writeFile(@arguments); 1 };
    if ($outcome) {
        my @lines;
        push @lines, "undo $undo[$_] $undo[$_ + 1]" for grep { $_ % 2 == 0 } 0 .. $#undo;
        return (0, join("\n", @lines));
    }
    my $failure = $@;
    return ($$failure{status}, $$failure{message}) if ref $failure eq 'HASH';
    $failure =~ s/\s+$//;
    return (1, "Error: $failure");
}

if (@ARGV and $ARGV[0] eq '--serve' and (@ARGV == 1 or (@ARGV == 2 and $ARGV[1] eq '--record-undo'))) {
    $recordUndo = @ARGV == 2;
    binmode STDIN;
    binmode STDOUT;
    $| = 1;
    while (defined(my $line = <STDIN>)) {
        $line =~ s/\r?\n$//;
        my @fields = split / /, $line, -1;
        my ($status, $message);
        if (@fields < 2) {
            ($status, $message) = (2, 'Error: malformed request');
        } else {
            $fields[$_] = decode_base64($fields[$_]) for 0, 1;
            ($status, $message) = handle(@fields);
        }
        print STDOUT "$status\n", (length $message ? "$message\n" : ''), $TERMINATOR;
    }
    exit 0;
}

if (@ARGV < 2) {
    print STDERR "Error: usage: set_tag.pl PATH <none>|DESTINATION TAG BASE64-VALUE ...\n";
    exit 2;
}
my ($status, $message) = handle(@ARGV);
print STDERR "$message\n" if length $message;
exit $status;
