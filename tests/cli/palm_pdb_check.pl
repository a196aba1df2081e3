#!/usr/bin/perl
# Reads a database with Perl's Palm::PDB, an independent reader of the container, and prints
# what it sees so the test can compare it with what qvdb wrote.
use strict;
use warnings;
use Palm::PDB;
use Palm::Raw;

my $pdb = Palm::PDB->new;
$pdb->Load($ARGV[0]) or die "cannot load $ARGV[0]\n";
printf "name=%s\n", $pdb->{name};
printf "creator=%s\n", $pdb->{creator};
printf "type=%s\n", $pdb->{type};
printf "records=%d\n", scalar @{$pdb->{records}};
my @lengths = map { length($_->{data}) } @{$pdb->{records}};
printf "lengths=%s\n", join(",", @lengths);
