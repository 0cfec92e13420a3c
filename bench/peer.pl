#!/usr/bin/perl -0777
# Deletes the matches of each expression of the first file (NUL-separated) from the second, writes the result to the
# third and prints the CPU seconds of the cleansing alone.
use strict;
use warnings;
use Time::HiRes qw(clock_gettime CLOCK_PROCESS_CPUTIME_ID);

my ($expressionFile, $input, $output) = @ARGV;

sub slurp {
    open my $file, '<:raw', $_[0] or die "$_[0]: $!";
    return scalar <$file>;
}

my @expressions = map { qr/$_/ } split /\0/, slurp($expressionFile);
my $text = slurp($input);
my $begin = clock_gettime(CLOCK_PROCESS_CPUTIME_ID);
for my $expression (@expressions) {
    $text =~ s/$expression//g;
}
my $end = clock_gettime(CLOCK_PROCESS_CPUTIME_ID);
open my $file, '>:raw', $output or die "$output: $!";
print $file $text;
close $file or die "$output: $!";
printf "%.6f\n", $end - $begin;
